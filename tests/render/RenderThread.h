// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Frames and textures of a shown window, which both render loops make on threads of their own
// choice.

#include <QImage>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QRunnable>
#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <functional>
#include <memory>

namespace RenderThread {

/// Runs `function` between two frames of a shown window, with the scene graph's context current.
/// False when no frame came.
inline bool run(QQuickWindow &window, const std::function<void(QOpenGLFunctions *)> &function)
{
    const auto done = std::make_shared<std::atomic_bool>(false);
    const auto job = [function, done] {
        function(QOpenGLContext::currentContext()->functions());
        *done = true;
    };
    window.scheduleRenderJob(QRunnable::create(job), QQuickWindow::AfterRenderingStage);
    window.update();
    return QTest::qWaitFor([done] { return done->load(); });
}

/// Puts a picture into a texture, first row first; into a new one for id 0.
inline GLuint upload(QQuickWindow &window, const QImage &picture, GLuint id = 0)
{
    const QImage image = picture.convertToFormat(QImage::Format_RGBA8888);
    run(window, [&](QOpenGLFunctions *gl) {
        if (id == 0)
            gl->glGenTextures(1, &id);
        gl->glBindTexture(GL_TEXTURE_2D, id);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image.width(), image.height(), 0, GL_RGBA,
                         GL_UNSIGNED_BYTE, image.constBits());
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
    });
    return id;
}

/// The texels of a texture, in the order in which they lie there, with their alpha.
inline QImage download(QQuickWindow &window, GLuint id, const QSize &size)
{
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(Qt::magenta);
    run(window, [&](QOpenGLFunctions *gl) {
        GLint target = 0;
        gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &target);
        GLuint framebuffer = 0;
        gl->glGenFramebuffers(1, &framebuffer);
        gl->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        gl->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, id, 0);
        gl->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE,
                         image.bits());
        gl->glBindFramebuffer(GL_FRAMEBUFFER, GLuint(target));
        gl->glDeleteFramebuffers(1, &framebuffer);
    });
    return image;
}

/// Why a window cannot be given a new scene graph in this run; null where it can.
inline const char *noNewSceneGraph()
{
    if (qgetenv("QSG_RENDER_LOOP") == "basic")
        return "This render loop keeps its scene graph as long as the window is there.";
#ifdef __SANITIZE_ADDRESS__
    return "A rendering thread that starts anew leaks the surface that it had for its cleanup.";
#else
    return nullptr;
#endif
}

/// Hides a window together with its scene graph; false when that stays.
inline bool hideWithSceneGraph(QQuickWindow &window)
{
    window.setPersistentOpenGLContext(false);
    window.setPersistentSceneGraph(false);
    QSignalSpy gone(&window, &QQuickWindow::sceneGraphInvalidated);
    window.hide();
    return QTest::qWaitFor([&] { return gone.count() == 1; });
}

/// Counts the frames that a window has shown.
class FrameCounter
{
public:
    explicit FrameCounter(QQuickWindow &window)
        : m_window(window)
        , m_connection(QObject::connect(&window, &QQuickWindow::frameSwapped,
                                        [count = m_count] { ++*count; }))
    { }

    ~FrameCounter() { QObject::disconnect(m_connection); }
    Q_DISABLE_COPY(FrameCounter)

    int count() const { return *m_count; }

    /// Waits for so many frames more, which a window at rest does not make by itself.
    bool wait(int frames) const
    {
        const int end = count() + frames;
        return QTest::qWaitFor([&] {
            if (count() >= end)
                return true;
            m_window.update();
            return false;
        });
    }

private:
    QQuickWindow &m_window;
    std::shared_ptr<std::atomic_int> m_count = std::make_shared<std::atomic_int>(0);
    QMetaObject::Connection m_connection;
};

} // namespace RenderThread
