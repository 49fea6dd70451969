// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Work on files that nobody waits for: a lost disk or network share keeps whoever asks it for
// anything, for minutes and without a way to interrupt it.

#include <functional>

namespace DetachedThread {

/// Runs \a work on a thread of its own, at a priority that is \a niceness lower than the caller's.
/// False when the system has no thread to give. On any thread.
bool start(std::function<void()> work, int niceness = 0);

/// True while such a thread is at work: the process must then end without the destructors of what
/// it uses. On any thread.
bool isAtWork();

} // namespace DetachedThread
