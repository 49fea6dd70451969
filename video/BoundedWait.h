// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Waiting for libvlc no longer than a user notices. Its own waits have no limit: stopping a player
// joins a thread that may be connecting to a server which does not answer, and cannot be told.

#include <chrono>
#include <functional>

/// Runs \a work on a thread of its own and waits for it. False when that takes longer than
/// \a patience: the work then goes on by itself, and is destroyed on its thread when it is done. Of
/// such threads there are as many as works that hang.
bool runWithin(std::chrono::milliseconds patience, std::function<void()> work);

/// Waits for the works that were left to themselves. False when some still run after \a patience:
/// the process must then end without the destructors of what they use. On any thread.
bool waitForLateWork(std::chrono::milliseconds patience);
