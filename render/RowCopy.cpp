// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/RowCopy.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QSGGeometryNode>

#include <cstring>
#include <utility>

namespace RowCopy {

void prepareFramebuffer(QOpenGLFunctions *gl)
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    const auto *renderer = reinterpret_cast<const char *>(gl->glGetString(GL_RENDERER));
    // OpenGL ES refuses a texture whose pixels come in another order than its format names.
    if (!renderer || !std::strstr(renderer, "llvmpipe") || context->isOpenGLES())
        return;
    QOpenGLExtraFunctions *more = context->extraFunctions();
    GLint type = GL_NONE;
    GLint texture = 0;
    gl->glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                              GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &type);
    if (type != GL_TEXTURE)
        return;
    gl->glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                              GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &texture);
    GLint width = 0;
    GLint height = 0;
    gl->glBindTexture(GL_TEXTURE_2D, GLuint(texture));
    more->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    more->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    // With a sized format the order would be the driver's choice, which is red first.
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_BGRA, GL_UNSIGNED_BYTE,
                     nullptr);
    gl->glBindTexture(GL_TEXTURE_2D, 0);
}

void prepareNode(QSGNode *node)
{
    // Without OpenGL the nodes of painted items have no geometry, only a flag in its place.
    if (!QOpenGLContext::currentContext() || !node || node->type() != QSGNode::GeometryNodeType)
        return;
    QSGGeometry *geometry = static_cast<QSGGeometryNode *>(node)->geometry();
    if (!geometry || geometry->vertexCount() != 4
        || geometry->sizeOfVertex() != int(sizeof(QSGGeometry::TexturedPoint2D)))
        return;
    // Whenever its size changes the node writes the corners of a strip: left top, left bottom,
    // right top, right bottom.
    QSGGeometry::TexturedPoint2D *corners = geometry->vertexDataAsTexturedPoint2D();
    if (corners[2].y != corners[0].y)
        return;
    std::swap(corners[2], corners[3]);
    geometry->setDrawingMode(QSGGeometry::DrawTriangleFan);
    node->markDirty(QSGNode::DirtyGeometry);
}

} // namespace RowCopy
