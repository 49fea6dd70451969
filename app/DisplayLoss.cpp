// SPDX-License-Identifier: GPL-3.0-or-later
// A handler of atexit() would come too late: those of libraries that were loaded after it, such as
// the graphics driver, come first and take away what the rendering thread and the decoders use. As
// the program's own symbol, exit() itself comes before the C library's.
#include "app/DisplayLoss.h"

#include "app/EndGuard.h"

#include <QLoggingCategory>

#include <X11/Xlib.h>
#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcApp, "tavro.app")

// For settings on a disk that does not answer, and for a main thread that waits for the very thread
// that waits for it.
constexpr std::chrono::seconds kPatience(1);

std::atomic_bool isWatching{false};
std::thread::id mainThread;
std::function<void()> saveSettings; // of the main thread

[[noreturn]] void endOnMainThread()
{
    qCCritical(lcApp) << "the X server is gone; ending without it";
    const EndGuard guard(kPatience, [] { _exit(DisplayLoss::kExitCode); });
    // Taken away: what it does may meet the dead server again.
    if (const auto save = std::exchange(saveSettings, nullptr))
        save();
    _exit(DisplayLoss::kExitCode);
}

// On any thread.
[[noreturn]] void end()
{
    if (std::this_thread::get_id() == mainThread)
        endOnMainThread();
    // The main thread finds the same.
    std::this_thread::sleep_for(kPatience * 2);
    _exit(DisplayLoss::kExitCode);
}

int onIoError(Display *)
{
    end();
}

} // namespace

extern "C" [[noreturn]] void exit(int code) noexcept
{
    if (isWatching)
        end();
    const auto next = reinterpret_cast<void (*)(int)>(dlsym(RTLD_NEXT, "exit"));
    next(code);
    std::abort();
}

void DisplayLoss::watch(std::function<void()> save)
{
    mainThread = std::this_thread::get_id();
    saveSettings = std::move(save);
    isWatching = true;
    XSetIOErrorHandler(onIoError);
}

void DisplayLoss::endBegins()
{
    isWatching = false;
    saveSettings = nullptr;
}
