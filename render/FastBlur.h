// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A two-pass Gaussian blur of a texture, which softens the panorama behind the interface.

#include <QObject>
#include <QSize>

#include <memory>

class QOpenGLFramebufferObject;
class QOpenGLFunctions;
class QOpenGLShaderProgram;

/// Blurs a texture with 15 taps, two texels apart, along x into a framebuffer of its own and then
/// along y into the target. Rendering thread only; the destructor may run elsewhere, since the
/// programs are deleted later by the thread that made them.
class FastBlur : public QObject
{
    Q_OBJECT

public:
    explicit FastBlur(QObject *parent = nullptr);
    ~FastBlur() override;

    /// Draws the blurred `texture` into the current viewport of `targetFbo` (0: the context's
    /// default framebuffer), upright, and leaves that framebuffer bound. `size` is that of the
    /// texture in pixels. A pass whose program does not build is left out.
    void blur(QOpenGLFunctions *gl, int texture, int targetFbo, QSize size);

private:
    // A program and the locations that each frame needs, looked up once.
    struct Pass
    {
        QOpenGLShaderProgram *program = nullptr;
        int position = -1;
        int texCoord = -1;
        int extent = -1; // size along the pass's axis, in pixels
    };

    void createPrograms();
    static Pass createPass(const char *name, const QByteArray &vertex, const char *extent);
    static void draw(QOpenGLFunctions *gl, const Pass &pass, uint texture, int extent);

    std::unique_ptr<QOpenGLFramebufferObject> m_blurFbo;
    Pass m_horizontal;
    Pass m_vertical;
};
