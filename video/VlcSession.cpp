// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/VlcSession.h"

#include <QElapsedTimer>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QThread>

#include <vlc/vlc.h>

#include <utility>

namespace {

constexpr int kSoonMs = 1000;

// What is asked of libvlc reaches its output after some pictures more.
constexpr std::chrono::milliseconds kAwake(1000);

// Whatever libvlc wants of the resting thread by itself waits for so long.
constexpr std::chrono::milliseconds kRest(400);

std::atomic<int> g_holding{0}; // abandoned sessions that hold memory
QElapsedTimer g_lastAbandoned; // of them

} // namespace

void VlcSession::SurfaceDeleter::operator()(QOffscreenSurface *surface) const
{
    if (surface->thread() == QThread::currentThread())
        delete surface;
    else
        surface->deleteLater();
}

VlcSession::VlcSession(VxVlcPlayerQml *item, libvlc_instance_t *instance)
    : m_player(libvlc_media_player_new(instance))
    , m_item(item)
{ }

VlcSession::~VlcSession()
{
    if (!m_player)
        return;
    stop();
    libvlc_media_player_release(m_player);
    if (m_counts)
        --g_holding;
}

void VlcSession::stop()
{
    {
        // The decoder's thread may be between asking and waiting.
        const std::lock_guard locker(m_mutex);
        m_stopping = true;
    }
    m_woken.notify_all();
    libvlc_media_player_stop(m_player);
    m_target.deleteContext();
    m_holdsMemory = false;
    m_stopping = false;
}

void VlcSession::rest()
{
    if (!m_still)
        return;
    std::unique_lock locker(m_mutex);
    m_woken.wait_for(locker, kRest, [this] {
        return m_stopping || std::chrono::steady_clock::now() < m_awakeUntil;
    });
}

void VlcSession::endRest()
{
    {
        const std::lock_guard locker(m_mutex);
        m_awakeUntil = std::chrono::steady_clock::now() + kAwake;
    }
    m_woken.notify_all();
}

void VlcSession::leaveItem()
{
    const std::unique_lock locker(m_itemMutex);
    m_item = nullptr;
}

void VlcSession::abandon()
{
    leaveItem();
    if (!m_holdsMemory)
        return;
    m_counts = true;
    ++g_holding;
    g_lastAbandoned.start();
}

bool VlcSession::isMemoryHeld()
{
    return g_holding > 0 && !g_lastAbandoned.hasExpired(kSoonMs);
}

void VlcSession::makeSurface(std::shared_ptr<QOpenGLContext> root)
{
    if (m_surface)
        return;
    auto *surface = new QOffscreenSurface;
    surface->setFormat(root->format());
    surface->create();
    {
        const std::lock_guard locker(m_mutex);
        m_root = std::move(root);
        m_surface.reset(surface);
    }
    m_woken.notify_all();
}

bool VlcSession::waitForSurface()
{
    std::unique_lock locker(m_mutex);
    m_woken.wait(locker, [this] { return m_surface || m_stopping; });
    return !m_stopping;
}

bool VlcSession::makeTargetCurrent()
{
    m_holdsMemory = true;
    return m_target.makeCurrent(m_root.get(), m_surface.get());
}
