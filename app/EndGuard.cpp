// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/EndGuard.h"

#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcApp, "tavro.app")

} // namespace

EndGuard::EndGuard(std::chrono::milliseconds patience, std::function<void()> end)
    : m_thread([this, patience, end = std::move(end)] {
        std::unique_lock lock(m_mutex);
        if (m_over.wait_for(lock, patience, [this] { return m_isOver; }))
            return;
        qCWarning(lcApp) << "something does not end; ending without it";
        end();
    })
{ }

EndGuard::~EndGuard()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
    }
    m_over.notify_all();
    m_thread.join();
}
