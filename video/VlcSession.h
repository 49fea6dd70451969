// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A player of libvlc with what its threads use. They may outlive the item that plays: one that
// waits for a lost server cannot be interrupted, and the main thread must not wait for it.

#include "video/DecoderTarget.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <shared_mutex>

class QOffscreenSurface;
class QOpenGLContext;
class VxVlcPlayerQml;
struct libvlc_instance_t;
struct libvlc_media_player_t;

/// The opaque object of all callbacks of the player. They reach the item by an ItemLock only.
class VlcSession
{
public:
    /// The session's item, which stays as long as the lock; null when it has left. Callbacks take
    /// it for what they do with the item, and never while they wait.
    class ItemLock
    {
    public:
        explicit ItemLock(VlcSession *session)
            : m_lock(session->m_itemMutex)
            , m_item(session->m_item)
        { }

        VxVlcPlayerQml *operator->() const { return m_item; }

        explicit operator bool() const { return m_item != nullptr; }

    private:
        std::shared_lock<std::shared_mutex> m_lock;
        VxVlcPlayerQml *m_item;
    };

    VlcSession(VxVlcPlayerQml *item, libvlc_instance_t *instance);
    /// Stops and releases the player; for as long as its threads take.
    ~VlcSession();
    VlcSession(const VlcSession &) = delete;
    VlcSession &operator=(const VlcSession &) = delete;

    /// Null when libvlc had none to give.
    libvlc_media_player_t *player() const { return m_player; }

    /// Of the decoder's thread.
    DecoderTarget &target() { return m_target; }

    /// Returns when libvlc's threads for the medium have ended; one that waits for its surface
    /// gives up at once. On any thread, one at a time.
    void stop();

    /// While stop() runs: further pictures are not wanted. On any thread.
    bool isStopping() const { return m_stopping; }

    /// Whether the player is paused: it then shows its picture again and again. On any thread.
    void setStill(bool still) { m_still = still; }

    bool isStill() const { return m_still; }

    /// Holds the decoder's thread of a paused player up for a moment, for each time it shows the
    /// same picture again costs as much as a new one.
    void rest();
    /// Something is about to be asked of the player, or to look at it, that wants the next picture
    /// at once.
    void endRest();

    /// From its return on nothing reaches the item any more: no picture and no event. Main thread
    /// only.
    void leaveItem();
    /// For a player that does not stop: leaves the item. What its output holds may still be heard:
    /// a sound server would keep a volume of 0 for other players. Main thread only.
    void abandon();
    /// True while a player that was abandoned just now still holds the memory of its pictures. One
    /// that decodes ends soon; for one that waits for its data there is no use in waiting. Main
    /// thread only.
    static bool isMemoryHeld();

    /// Makes what the decoder's context is current on, once; that context will share with \a root.
    /// On the main thread, as surfaces have to be.
    void makeSurface(std::shared_ptr<QOpenGLContext> root);
    /// Waits for the surface. False when the player is being stopped. On the decoder's thread.
    bool waitForSurface();
    /// Makes a context of the calling thread current, the decoder's; after waitForSurface().
    bool makeTargetCurrent();

private:
    struct SurfaceDeleter // on the thread that has made it
    {
        void operator()(QOffscreenSurface *surface) const;
    };

    libvlc_media_player_t *const m_player;
    // Guards m_root, m_surface and m_awakeUntil; m_stopping changes under it.
    std::mutex m_mutex;
    std::condition_variable m_woken; // a thread that waits for the surface, or rests
    std::shared_ptr<QOpenGLContext> m_root;
    std::unique_ptr<QOffscreenSurface, SurfaceDeleter> m_surface;
    DecoderTarget m_target;
    std::atomic<bool> m_stopping{false};
    std::atomic<bool> m_still{false};
    std::chrono::steady_clock::time_point m_awakeUntil;
    std::atomic<bool> m_holdsMemory{false}; // of pictures
    bool m_counts = false; // among the abandoned that hold memory
    std::shared_mutex m_itemMutex; // shared by whoever uses the item
    VxVlcPlayerQml *m_item;
};
