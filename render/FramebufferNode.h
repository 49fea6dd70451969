// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A framebuffer as a part of the scene: what an item draws into with OpenGL of its own, and what
// the scene graph shows in the item's place. A painted item's own framebuffer comes with a painter,
// whose shaders the first frame would wait for, and with a depth and a stencil buffer.

#include <QSGGeometryNode>
#include <QSGTextureMaterial>
#include <QSize>

#include <array>
#include <memory>

class QOpenGLFunctions;
class QQuickWindow;
class QSGTexture;

/// Lives on the rendering thread; made, used and deleted with the scene graph's context current.
class FramebufferNode : public QSGGeometryNode
{
public:
    /// \a window shows the node, which is to be drawn after the first resize() only.
    explicit FramebufferNode(QQuickWindow *window);
    ~FramebufferNode() override;
    Q_DISABLE_COPY(FramebufferNode)

    /// Gives the node a rectangle at its item's origin, \a size in the item's units and not empty,
    /// and as many pixels as the window shows of it. If that takes a new framebuffer, what the old
    /// one held is lost.
    void resize(QSizeF size, qreal pixelRatio);

    /// Gives the node another rectangle and leaves its pixels as they are, until the next resize().
    void stretch(QSizeF size);

    /// Makes the framebuffer the target of what is drawn, with no test and no blending enabled and
    /// no buffers bound, whatever the scene graph has left. The lowest row of what is drawn is the
    /// item's lowest. Each pixel's alpha must end as 1: in a window without a depth buffer opaque
    /// nodes are blended too.
    void bind(QOpenGLFunctions *gl);
    /// Gives the target back to the scene graph, which is told that the pixels have changed.
    void release(QOpenGLFunctions *gl);

private:
    std::array<QSGOpaqueTextureMaterial *, 2> materials()
    {
        return {&m_opaqueMaterial, &m_material};
    }

    void setCorners(QSizeF size);
    void makeFramebuffer(QOpenGLFunctions *gl, QSize size);
    void deleteFramebuffer();

    QQuickWindow *m_window; // not owned
    QSGGeometry m_geometry;
    QSGOpaqueTextureMaterial m_opaqueMaterial;
    QSGTextureMaterial m_material; // of an item that lets something through
    std::unique_ptr<QSGTexture> m_texture; // a view of m_textureId
    unsigned m_textureId = 0;
    unsigned m_framebuffer = 0;
    QSizeF m_size;
    qreal m_pixelRatio = 0;
    QSize m_pixels;
};
