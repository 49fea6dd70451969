// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/FramePacer.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>

FramePacer::FramePacer(QQuickItem *item)
    : QObject(item)
    , m_item(item)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &FramePacer::requestFrame);
}

void FramePacer::start(QQuickWindow *window)
{
    connect(window, &QQuickWindow::frameSwapped, this, &FramePacer::onFrameSwapped,
            Qt::UniqueConnection);
}

void FramePacer::requestFrame()
{
    m_timer.stop();
    // A frame without any change makes Qt's rendering thread sleep until the next refresh, and
    // whatever changes meanwhile waits for it. The item asks again when it is shown.
    if (!m_item->isVisible())
        return;
    m_sinceRequest.start();
    m_item->update();
}

void FramePacer::onFrameSwapped()
{
    const qint64 wait =
        m_restless || !m_sinceRequest.isValid() ? 0 : intervalMs() - m_sinceRequest.elapsed();
    if (wait > 0)
        m_timer.start(int(wait));
    else
        requestFrame();
}

// Longer than the pictures of a film last, so that none is composed twice.
int FramePacer::intervalMs() const
{
    constexpr qreal kRefreshes = 3;
    constexpr qreal kSlowest = 24;
    constexpr qreal kFastest = 500;
    constexpr qreal kUsual = 60;
    const QScreen *screen = m_item->window() ? m_item->window()->screen() : nullptr;
    const qreal rate = screen ? screen->refreshRate() : kUsual;
    // Virtual screens may tell anything.
    return int(kRefreshes * 1000 / (rate >= kSlowest && rate <= kFastest ? rate : kUsual));
}
