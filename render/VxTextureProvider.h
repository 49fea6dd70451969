// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one place from which the renderers take the current source texture. A source is either a
// plain texture, whose id is written into the provider, or the texture of a scene graph item.

#include <QObject>
#include <QPointer>
#include <QSize>

#include <atomic>
#include <memory>

class QOpenGLFramebufferObject;
class QOpenGLFunctions;
class QOpenGLShaderProgram;
class QQuickItem;
class QSGTextureProvider;
class QTimer;
class VxContext;

/// Gives the current source texture and its size. The slots run on the rendering thread with the
/// scene graph's context current, and so the property signals may come from there; `textureId` is
/// read by renderers on other threads without a lock.
class VxTextureProvider : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int textureId READ textureId WRITE setTextureId NOTIFY textureIdChanged)
    Q_PROPERTY(QSize textureSize READ textureSize WRITE setTextureSize NOTIFY textureSizeChanged)

public:
    /// \a copyTexture: moving pictures of scene graph items are copied, so that the texture stays
    /// valid while the scene graph makes the next one. \a sharedMemory is the start-up setting of
    /// that name; no host offers frames that way, so it has no effect.
    VxTextureProvider(VxContext *context, bool copyTexture, bool sharedMemory);
    ~VxTextureProvider() override;

    /// The texture to sample; 0 while there is none.
    int textureId() const { return m_textureId; }

    void setTextureId(int id);

    /// In texels; invalid before the first texture.
    QSize textureSize() const { return m_textureSize.load(std::memory_order_acquire); }

    void setTextureSize(const QSize &size);

    /// Watches the texture of \a quickItem, which may be null; \a isImage tells a still image,
    /// whose texture is sampled where it lies.
    Q_INVOKABLE void setShaderEffectSource(QQuickItem *quickItem, bool isImage = false);

    Q_INVOKABLE bool isSharedMemory() const { return false; }

    /// Follows the frames of a source that draws into a texture of one id: \a player has a signal
    /// frameDisplayed(), which may come from any thread.
    Q_INVOKABLE void watchFrames(QObject *player);

public Q_SLOTS:
    /// Tells the provider that the texture holds another picture. Any thread.
    void noteNewContent();

Q_SIGNALS:
    void textureIdChanged();
    void textureSizeChanged();
    /// The texture, or perhaps the picture in it, is another one. From any thread.
    void contentChanged();

private Q_SLOTS:
    void onBeforeSynchronizing();
    void onQsgTextureChanged();
    void expectRendering();
    void onAfterRendering();
    void stopTimer();
    void releaseGraphics();

private:
    QQuickItem *textureItem() const;
    void followNextSynchronisation();
    void createRefreshTimer();
    void copy(uint texture, const QSize &size);
    bool buildCopyProgram();

    VxContext *m_context; // not owned
    const bool m_copyTexture;
    std::atomic_int m_textureId{0};
    std::atomic<QSize> m_textureSize{QSize()};

    // Not owned. The rendering thread touches it only while the main thread is held; at other times
    // it asks the flags.
    QPointer<QQuickItem> m_shaderEffectSource;
    std::atomic_bool m_hasSource{false};
    std::atomic_bool m_isImage{false};

    // Of the rendering thread:
    QPointer<QSGTextureProvider> m_sgTextureProvider; // not owned
    QPointer<QTimer> m_refreshTimer; // goes with the scene graph
    bool m_drawnLater = false; // the texture exists only after the frame that announces it
    bool m_awaitsRendering = false;
    QOpenGLFunctions *m_copyFunctions = nullptr; // of the scene graph's context
    std::unique_ptr<QOpenGLShaderProgram> m_copyProgram;
    int m_vertexLocation = -1;
    int m_textureLocation = -1;
    std::unique_ptr<QOpenGLFramebufferObject> m_copyFbo;
};
