// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DetachedThread.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <system_error>
#include <thread>
#include <utility>

namespace {

std::atomic_int threadsAtWork{0};

} // namespace

bool DetachedThread::start(std::function<void()> work, int niceness)
{
    ++threadsAtWork;
    try {
        std::thread([work = std::move(work), niceness]() mutable {
            if (niceness != 0) {
                const auto thread = id_t(syscall(SYS_gettid));
                setpriority(PRIO_PROCESS, thread, getpriority(PRIO_PROCESS, thread) + niceness);
            }
            work();
            work = nullptr; // before the thread no longer counts
            --threadsAtWork;
        }).detach();
    } catch (const std::system_error &) {
        --threadsAtWork;
        return false;
    }
    return true;
}

bool DetachedThread::isAtWork()
{
    return threadsAtWork > 0;
}
