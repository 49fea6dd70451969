// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Nobody should have to kill a player that the user has closed.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// Ends the process by force when its own end takes too long: a decoder that waits for a dead disk
/// or a lost server cannot be interrupted, and the libraries that started it wait for it. Made when
/// the event loop has ended, deleted when everything else is.
class EndGuard
{
public:
    /// Calls \a end on a thread of its own after \a patience; it must end the process at once.
    EndGuard(std::chrono::milliseconds patience, std::function<void()> end);
    ~EndGuard();
    EndGuard(const EndGuard &) = delete;
    EndGuard &operator=(const EndGuard &) = delete;

private:
    std::mutex m_mutex; // guards m_isOver
    std::condition_variable m_over;
    bool m_isOver = false;
    std::thread m_thread;
};
