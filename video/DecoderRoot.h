// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the OpenGL contexts of an item's decoders come from: the context through which they share
// with the scene graph's, and the surfaces that they are current on.

#include <QOffscreenSurface>
#include <QOpenGLContext>

#include <array>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

/// Held by the item and by each of its players, the last of which may go on any thread.
class DecoderRoot
{
public:
    /// Makes the context, once. False when there is one or it cannot be made. On the rendering
    /// thread, the main thread waiting, with the scene graph's context current.
    bool makeContext();
    /// Surfaces have to be made on the main thread.
    void makeSurfaces();

    /// Waits until there are surfaces or \a givenUp, which is asked again at each wakeWaiting(). On
    /// a decoder's thread.
    void waitForSurfaces(const std::function<bool()> &givenUp);
    /// On any thread.
    void wakeWaiting();

    // After the surfaces, on any thread.
    QOpenGLContext *context() const { return m_context.get(); }

    /// Each decoder's context is to have one of its own.
    QOffscreenSurface *nextSurface() { return m_surfaces[++m_uses % m_surfaces.size()].get(); }

private:
    struct Deleter // on the thread that has made the surface
    {
        void operator()(QOffscreenSurface *surface) const;
    };

    std::array<std::unique_ptr<QOffscreenSurface, Deleter>, 2> m_surfaces;
    std::unique_ptr<QOpenGLContext> m_context;
    std::atomic<unsigned> m_uses{0};
    std::mutex m_mutex; // guards m_made
    std::condition_variable m_wake;
    bool m_made = false; // the surfaces
};
