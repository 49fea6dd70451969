// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An end in one piece when the X server goes. Qt then calls exit() on the main thread, and Xlib in
// whichever thread was just talking to the server, the rendering thread as a rule: two at a time,
// among decoders that go on, they crash.

#include <functional>

namespace DisplayLoss {

/// The exit code of a program that lost its display.
constexpr int kExitCode = 1;

/// From now on a lost display ends the process with the code above and without destructors, after
/// \a save, which is called on the main thread. After the application object, whose Xlib handler it
/// replaces, and for the time of the event loop, in which nothing else calls exit(). Main thread.
void watch(std::function<void()> save);

/// The program ends by itself: there is nothing more to save. Main thread.
void endBegins();

} // namespace DisplayLoss
