// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/DecoderRoot.h"

#include <QThread>

#include <utility>

void DecoderRoot::Deleter::operator()(QOffscreenSurface *surface) const
{
    if (surface->thread() == QThread::currentThread())
        delete surface;
    else
        surface->deleteLater();
}

bool DecoderRoot::makeContext()
{
    QOpenGLContext *current = QOpenGLContext::currentContext();
    if (m_context || !current)
        return false;
    auto context = std::make_unique<QOpenGLContext>();
    context->setFormat(current->format());
    context->setShareContext(current);
    if (!context->create())
        return false;
    m_context = std::move(context);
    return true;
}

void DecoderRoot::makeSurfaces()
{
    for (auto &surface : m_surfaces) {
        surface.reset(new QOffscreenSurface);
        surface->setFormat(m_context->format());
        surface->create();
    }
    {
        const std::lock_guard locker(m_mutex);
        m_made = true;
    }
    m_wake.notify_all();
}

void DecoderRoot::waitForSurfaces(const std::function<bool()> &givenUp)
{
    std::unique_lock locker(m_mutex);
    m_wake.wait(locker, [&] { return m_made || givenUp(); });
}

void DecoderRoot::wakeWaiting()
{
    // Nobody may be between asking and waiting.
    {
        const std::lock_guard locker(m_mutex);
    }
    m_wake.notify_all();
}
