// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/BoundedWait.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace {

struct Works
{
    std::mutex mutex; // guards what follows, and whether a work is done
    std::condition_variable changed;
    int running = 0;
};

// Never deleted: a late work outlives even what is deleted at the end of the process.
Works &works()
{
    static auto *all = new Works;
    return *all;
}

} // namespace

bool runWithin(std::chrono::milliseconds patience, std::function<void()> work)
{
    Works &all = works();
    const auto done = std::make_shared<bool>(false);
    std::unique_lock locker(all.mutex);
    std::thread([&all, done, work = std::move(work)]() mutable {
        work();
        work = nullptr; // whoever waited must be the last who holds what both held
        {
            const std::lock_guard finish(all.mutex);
            *done = true;
            --all.running;
        }
        all.changed.notify_all();
    }).detach();
    ++all.running;
    return all.changed.wait_for(locker, patience, [&done] { return *done; });
}

bool waitForLateWork(std::chrono::milliseconds patience)
{
    Works &all = works();
    std::unique_lock locker(all.mutex);
    return all.changed.wait_for(locker, patience, [&all] { return all.running == 0; });
}
