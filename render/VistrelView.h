// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The item that shows the panorama: one quad per eye, drawn with the generated shader into the
// item's framebuffer, below the interface.

#include "render/PanoramaProgram.h"

#include <QQuickPaintedItem>
#include <QSize>
#include <QTimer>

#include <omp.h>

#include <array>
#include <atomic>
#include <memory>

class FastBlur;
class FramebufferNode;
class QOpenGLFramebufferObject;
class QOpenGLFunctions;
class VxContext;

/// The panorama. paint() and what it calls run on the rendering thread while the main thread is
/// held, so they read the controller's and the builder's plain values; everything else runs on the
/// main thread.
class VistrelView : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(int fps READ fps NOTIFY fpsChanged)
    Q_PROPERTY(int printScreenRequested READ printScreenRequested WRITE setPrintScreenRequested
                   NOTIFY printScreenRequestedChanged)
    /// Without a texture the view goes on showing what it drew last, as long as it is visible,
    /// instead of its background: between one medium and the next nothing flashes.
    Q_PROPERTY(bool keepsPicture READ keepsPicture WRITE setKeepsPicture NOTIFY keepsPictureChanged)

public:
    explicit VistrelView(QQuickItem *parent = nullptr);
    ~VistrelView() override;

    /// Gives the item its surroundings; \a application is the VxContext. Without it nothing is
    /// painted.
    Q_INVOKABLE void init(QObject *application);

    /// Frames of the last whole second; 0 for a picture at rest.
    int fps() const { return m_fps; }

    /// The pending snapshot: 0 none, 1 in the view's size, 2 in the source's resolution.
    int printScreenRequested() const;
    void setPrintScreenRequested(int mode);

    bool keepsPicture() const { return m_keepsPicture; }

    void setKeepsPicture(bool keeps);

    void paint(QPainter *painter) override;

    /// Darkens what the current framebuffer and viewport hold to its half, for an interface that
    /// stands before the panorama. Needs the scene graph's context to be current.
    void drawDim(QOpenGLFunctions *gl);

public Q_SLOTS:
    void dirtyShader();
    void computeFps();
    void computeViewportParameters();

Q_SIGNALS:
    void fpsChanged();
    void printScreenRequestedChanged();
    void keepsPictureChanged();
    /// A snapshot lies on the disk, or could not be written to the folder for this reason.
    void snapshotSaved(const QString &path);
    void snapshotFailed(const QString &folder, const QString &reason);

protected:
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;

private:
    /// All that the pixels of a frame depend on beside what the texture holds.
    struct FrameState
    {
        PanoramaUniforms uniforms;
        std::array<int, 2> viewport{};
        QSizeF itemSize; // with the ratio, the framebuffer's size
        qreal pixelRatio = 0;
        bool splitView = false;
        bool overlay = false; // the interface shows in the view, and changes as it likes
        int textureId = 0;
    };

    /// Something that the picture depends on has changed, or may have. Nothing else makes a frame.
    void requestFrame();
    void paintChange();
    void rest();
    /// Drops what lives in the scene graph's context. Rendering thread, with that context current.
    void releaseGraphics();
    FrameState currentState() const;
    bool needsNoClearing() const;
    bool isOverlayActive() const;
    void paintFrame(QOpenGLFunctions *gl);
    void createShaders();
    void createLayerShaders();
    void drawEye(QOpenGLFunctions *gl, int eye, QSize size = QSize());
    void drawPanorama(QOpenGLFunctions *gl, int eye);
    void drawOverlay(QOpenGLFunctions *gl, int layer);
    void announceFirstFrame();
    QSize snapshotSize() const;
    void takeSnapshot(QOpenGLFunctions *gl, int mode);

    VxContext *m_context = nullptr; // not owned
    QTimer m_restTimer; // until no frame means that the picture is at rest

    std::unique_ptr<PanoramaProgram> m_panoramaProgram;
    std::unique_ptr<PanoramaProgram> m_dimProgram;
    std::unique_ptr<PanoramaProgram> m_overlayProgram;
    bool m_shaderDirty = true;
    bool m_layersBuilt = false; // the two latter, or their failure is known
    ShaderAssumptions m_assumptions; // what the panorama's shader was specialised for

    mutable omp_lock_t m_printLock;
    int m_printScreenRequested = 0;
    bool m_keepsPicture = false;
    bool m_holdsPicture = false; // the node has drawn a texture, and was seen since

    int m_fps = 0;
    int m_frameCount = 0;
    qint64 m_lastSecond = 0;

    std::array<float, 2> m_viewportSize{};
    std::array<float, 2> m_viewportSizeMin{};
    std::array<float, 2> m_viewportSizeRatio{};
    int m_viewportWidth = -1; // device pixels
    int m_viewportHeight = -1;

    std::atomic_bool m_changed{true}; // what the framebuffer does not show yet
    FramebufferNode *m_node = nullptr; // the scene graph's; null before the first frame
    FrameState m_state; // of the frame that was painted last
    bool m_firstFrameAnnounced = false;

    std::unique_ptr<FastBlur> m_fastBlur;
    std::unique_ptr<QOpenGLFramebufferObject> m_overlayScene;
};
