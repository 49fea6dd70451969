// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/FastBlur.h"

#include "render/ShaderProgram.h"
#include "render/UnitQuad.h"

#include <QMatrix4x4>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QRect>

namespace {

// A Gaussian whose weights sum to 1: the outermost tap to the centre, and back the same way.
constexpr const char *kWeights[] = {
    "0.0044299121055113265", "0.00895781211794", "0.0215963866053", "0.0443683338718",
    "0.0776744219933",       "0.115876621105",   "0.147308056121",  "0.159576912161",
};
constexpr int kReach = 7; // taps on either side of the centre

// The place of neighbour 0 to 13 in the array that both stages share.
QByteArray neighbour(int index)
{
    return "v_blurTexCoords[" + QByteArray::number(index).rightJustified(2) + ']';
}

// The neighbours' places are made per vertex, so that the fragments' reads depend on nothing.
// `extent` names the uniform that holds the size along the axis, in pixels; `offsetBegin` and
// `offsetEnd` enclose the distance along it.
QByteArray vertexSource(const QByteArray &extent, const QByteArray &offsetBegin,
                        const QByteArray &offsetEnd)
{
    QByteArray code = "attribute vec4 a_position;\n"
                      "attribute vec2 a_texCoord;\n"
                      "uniform mat4 matrix;\n"
                      "uniform float "
        + extent
        + ";\n"
          "varying vec2 v_texCoord;\n"
          "varying vec2 v_blurTexCoords[14];\n"
          "void main()\n"
          "{\n"
          "    gl_Position = matrix * a_position;\n"
          "    v_texCoord = a_texCoord;\n"
          "    float d = 2.0 / "
        + extent + ";\n";
    int index = 0;
    for (int k = -kReach; k <= kReach; ++k) {
        if (k != 0)
            code += "    " + neighbour(index++) + " = v_texCoord + " + offsetBegin
                + QByteArray::number(k) + ".0 * d" + offsetEnd + ";\n";
    }
    return code + "}\n";
}

QByteArray fragmentSource()
{
    QByteArray code =
        "uniform sampler2D s_texture;\n"
        "varying vec2 v_texCoord;\n"
        "varying vec2 v_blurTexCoords[14];\n"
        "void main()\n"
        "{\n"
        "    gl_FragColor = vec4(0.0);\n";
    int index = 0;
    for (int k = -kReach; k <= kReach; ++k) {
        const QByteArray place = k == 0 ? QByteArray("v_texCoord") : neighbour(index++);
        code += "    gl_FragColor += texture2D(s_texture, " + place + ")*"
            + kWeights[kReach - qAbs(k)] + ";\n";
    }
    return code + "}\n";
}

} // namespace

FastBlur::FastBlur(QObject *parent)
    : QObject(parent)
{ }

FastBlur::~FastBlur()
{
    for (const Pass &pass : {m_horizontal, m_vertical}) {
        if (pass.program)
            pass.program->deleteLater();
    }
}

void FastBlur::createPrograms()
{
    if (m_vertical.program)
        m_vertical.program->deleteLater();
    m_horizontal = createPass("horizontal blur", vertexSource("width", "vec2(", ", 0.0)"), "width");
    m_vertical = createPass("vertical blur", vertexSource("height", "vec2(0.0, ", ")"), "height");
}

FastBlur::Pass FastBlur::createPass(const char *name, const QByteArray &vertex, const char *extent)
{
    Pass pass;
    pass.program = ShaderProgram::build(name, vertex, fragmentSource());
    if (!pass.program)
        return pass;
    pass.position = pass.program->attributeLocation("a_position");
    pass.texCoord = pass.program->attributeLocation("a_texCoord");
    pass.extent = pass.program->uniformLocation(extent);
    // These hold for the life of the program. y points down in the rectangle, so each pass turns
    // the picture over and the two together keep it upright.
    QMatrix4x4 matrix;
    matrix.ortho(QRect(0, 0, 1, 1));
    pass.program->bind();
    pass.program->setUniformValue("matrix", matrix);
    pass.program->setUniformValue("s_texture", 0);
    pass.program->release();
    return pass;
}

void FastBlur::draw(QOpenGLFunctions *gl, const Pass &pass, uint texture, int extent)
{
    pass.program->bind();
    pass.program->setUniformValue(pass.extent, float(extent));
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    pass.program->enableAttributeArray(pass.position);
    pass.program->enableAttributeArray(pass.texCoord);
    pass.program->setAttributeArray(pass.position, UnitQuad::kCorners, 2);
    pass.program->setAttributeArray(pass.texCoord, UnitQuad::kCorners, 2);
    gl->glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    pass.program->disableAttributeArray(pass.position);
    pass.program->disableAttributeArray(pass.texCoord);
    pass.program->release();
}

void FastBlur::blur(QOpenGLFunctions *gl, int texture, int targetFbo, QSize size)
{
    if (!m_horizontal.program)
        createPrograms();
    if (!m_blurFbo || m_blurFbo->size() != size)
        m_blurFbo = std::make_unique<QOpenGLFramebufferObject>(size, GL_TEXTURE_2D);

    // The caller's viewport is a place in the target, for a second eye away from the origin: the
    // first pass needs one of its own. Releasing the framebuffer object would bind the context's
    // default framebuffer, so the target is bound by hand.
    GLint viewport[4] = {};
    gl->glGetIntegerv(GL_VIEWPORT, viewport);
    if (m_horizontal.program) {
        m_blurFbo->bind();
        gl->glViewport(0, 0, size.width(), size.height());
        draw(gl, m_horizontal, uint(texture), size.width());
    }
    const GLuint target = targetFbo != 0
        ? GLuint(targetFbo)
        : QOpenGLContext::currentContext()->defaultFramebufferObject();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, target);
    gl->glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    if (m_vertical.program)
        draw(gl, m_vertical, m_blurFbo->texture(), size.height());
}
