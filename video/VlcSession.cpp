// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/VlcSession.h"

#include "video/DecoderRoot.h"

#include <QElapsedTimer>

#include <vlc/vlc.h>

#include <mutex>
#include <utility>

namespace {

constexpr int kSoonMs = 1000;

std::atomic<int> g_holding{0}; // abandoned sessions that hold memory
QElapsedTimer g_lastAbandoned; // of them

} // namespace

VlcSession::VlcSession(VxVlcPlayerQml *item, std::shared_ptr<DecoderRoot> root,
                       libvlc_instance_t *instance)
    : m_root(std::move(root))
    , m_player(libvlc_media_player_new(instance))
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
    m_stopping = true;
    m_root->wakeWaiting();
    libvlc_media_player_stop(m_player);
    m_target.deleteContext();
    m_holdsMemory = false;
    m_stopping = false;
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

bool VlcSession::waitForSurfaces()
{
    m_root->waitForSurfaces([this] { return m_stopping.load(); });
    return !m_stopping;
}

bool VlcSession::makeTargetCurrent()
{
    if (!m_target.belongsToCurrentThread())
        m_surface = m_root->nextSurface();
    m_holdsMemory = true;
    return m_target.makeCurrent(m_root->context(), m_surface);
}
