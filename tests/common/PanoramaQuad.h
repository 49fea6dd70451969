// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Draws the panorama's quad off screen with the matrices and uniforms of a view, for tests and
// benchmarks that need no window.

#include "tests/common/PanoramaReference.h"

#include <QByteArray>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLTexture>

#include <memory>

class QOpenGLShaderProgram;

/// A context of the default format, current from construction on.
class OffscreenContext
{
public:
    OffscreenContext();
    ~OffscreenContext();

    bool isValid() const { return m_current; }

    QOpenGLFunctions *functions() const { return m_context.functions(); }

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    bool m_current = false;
};

/// The picture as a texture without mipmaps, first row first.
std::unique_ptr<QOpenGLTexture> textureFrom(const QImage &image);

/// One program and the quad. Draw only where isValid().
class PanoramaQuad
{
public:
    /// A quad with the vertex shader of the panorama.
    explicit PanoramaQuad(const QByteArray &fragment,
                          const QByteArray &vertex = VxShaderCodeBuilder::vertexShaderSource());
    ~PanoramaQuad();

    bool isValid() const { return m_program != nullptr; }

    /// Sets every uniform for one eye; those that the program has no use for are left out.
    void setUniforms(const PanoramaScene &scene, int eye);
    /// Draws on the current viewport and framebuffer with what was set last.
    void draw(QOpenGLFunctions *gl, GLuint texture);
    /// Clears the framebuffer to the background, draws each eye on its viewport and reads the view.
    QImage picture(QOpenGLFunctions *gl, const PanoramaScene &scene, GLuint texture);

private:
    std::unique_ptr<QOpenGLShaderProgram> m_program;
};
