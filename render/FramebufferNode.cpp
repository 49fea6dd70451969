// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/FramebufferNode.h"

#include "gl/SoftwareOpenGl.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QSGTexture>

#include <algorithm>

namespace {

/// Mesa's software driver composes a texture into the window row by row in memory, instead of
/// running a shader for each pixel, where nothing but the texture is drawn, in the window's byte
/// order, as a rectangle that it recognises, into a window without depth and stencil buffer. The
/// shader would take a quarter of the time of a panorama.
GLenum pixelOrder()
{
    // OpenGL ES refuses a texture whose pixels come in another order than its format names.
    const bool copiesRows =
        SoftwareOpenGl::isInUse() && !QOpenGLContext::currentContext()->isOpenGLES();
    return copiesRows ? GL_BGRA : GL_RGBA;
}

} // namespace

FramebufferNode::FramebufferNode(QQuickWindow *window)
    : m_window(window)
    , m_geometry(QSGGeometry::defaultAttributes_TexturedPoint2D(), 4)
{
    SoftwareOpenGl::detect();
    // Of a strip the driver would make two triangles.
    m_geometry.setDrawingMode(QSGGeometry::DrawTriangleFan);
    setGeometry(&m_geometry);
    setMaterial(&m_material);
    setOpaqueMaterial(&m_opaqueMaterial);
    for (QSGOpaqueTextureMaterial *material : materials()) {
        // The framebuffer has the item's own pixels: filtering it would only cost time.
        material->setFiltering(QSGTexture::Nearest);
        material->setHorizontalWrapMode(QSGTexture::ClampToEdge);
        material->setVerticalWrapMode(QSGTexture::ClampToEdge);
    }
}

FramebufferNode::~FramebufferNode()
{
    deleteFramebuffer();
}

void FramebufferNode::resize(QSizeF size, qreal pixelRatio)
{
    if (size == m_size && pixelRatio == m_pixelRatio)
        return;
    m_size = size;
    m_pixelRatio = pixelRatio;
    const QSize pixels(std::max(1, qRound(size.width() * pixelRatio)),
                       std::max(1, qRound(size.height() * pixelRatio)));
    if (pixels != m_pixels) {
        deleteFramebuffer();
        makeFramebuffer(QOpenGLContext::currentContext()->functions(), pixels);
        m_pixels = pixels;
    }
    setCorners(size);
}

void FramebufferNode::stretch(QSizeF size)
{
    if (size == m_size || size.isEmpty())
        return;
    m_size = size;
    m_pixelRatio = 0; // of no window
    setCorners(size);
}

void FramebufferNode::setCorners(QSizeF size)
{
    QSGGeometry::TexturedPoint2D *corners = m_geometry.vertexDataAsTexturedPoint2D();
    const auto right = float(size.width());
    const auto bottom = float(size.height());
    corners[0].set(0, 0, 0, 1);
    corners[1].set(0, bottom, 0, 0);
    corners[2].set(right, bottom, 1, 0);
    corners[3].set(right, 0, 1, 1);
    markDirty(DirtyGeometry);
}

void FramebufferNode::makeFramebuffer(QOpenGLFunctions *gl, QSize size)
{
    gl->glGenTextures(1, &m_textureId);
    gl->glBindTexture(GL_TEXTURE_2D, m_textureId);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    // With a sized format the order would be the driver's choice, which is red first.
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, size.width(), size.height(), 0, pixelOrder(),
                     GL_UNSIGNED_BYTE, nullptr);
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    gl->glGenFramebuffers(1, &m_framebuffer);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_textureId, 0);
    gl->glBindFramebuffer(GL_FRAMEBUFFER,
                          QOpenGLContext::currentContext()->defaultFramebufferObject());
    m_texture.reset(m_window->createTextureFromNativeObject(QQuickWindow::NativeObjectTexture,
                                                            &m_textureId, 0, size));
    for (QSGOpaqueTextureMaterial *material : materials())
        material->setTexture(m_texture.get());
    markDirty(DirtyMaterial);
}

void FramebufferNode::deleteFramebuffer()
{
    for (QSGOpaqueTextureMaterial *material : materials())
        material->setTexture(nullptr);
    m_texture.reset();
    if (QOpenGLContext *context = QOpenGLContext::currentContext()) {
        context->functions()->glDeleteFramebuffers(1, &m_framebuffer);
        context->functions()->glDeleteTextures(1, &m_textureId);
    }
    m_framebuffer = 0;
    m_textureId = 0;
}

void FramebufferNode::bind(QOpenGLFunctions *gl)
{
    gl->glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    for (const GLenum test :
         {GL_SCISSOR_TEST, GL_DEPTH_TEST, GL_STENCIL_TEST, GL_BLEND, GL_CULL_FACE})
        gl->glDisable(test);
    gl->glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

void FramebufferNode::release(QOpenGLFunctions *gl)
{
    gl->glBindFramebuffer(GL_FRAMEBUFFER,
                          QOpenGLContext::currentContext()->defaultFramebufferObject());
    markDirty(DirtyMaterial);
}
