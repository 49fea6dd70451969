// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/YuvConverterImp.h"

#include <QLoggingCategory>
#include <QOpenGLFunctions_2_0>

Q_LOGGING_CATEGORY(lcYuvShader, "tavro.shader", QtWarningMsg)

namespace {

const char kVertexShader[] =
    "attribute vec4 vertex;\n"
    "uniform mat4 matrix;\n"
    "void main(void)\n"
    "{\n"
    "   gl_Position = matrix * vertex;\n"
    "}\n";

// Squeezes a signal that uses all 256 levels into studio range, which the formulas below expand.
const char kFullToStudioRange[] =
    "  y = 16.0/255.0 + y * (235.0-16.0)/255.0;\n"
    "  u = 16.0/255.0 + u * (240.0-16.0)/255.0;\n"
    "  v = 16.0/255.0 + v * (240.0-16.0)/255.0;\n";

// ITU-R BT.709. Cb holds v and Cr holds u: the result has red and blue exchanged, as all pictures
// from libvlc, and the panorama's shader exchanges them back.
const char kBt709[] =
    "  float y_rgb = 1.1643 * (y - 0.0625);\n"
    "  float Cb = v - 0.5;\n"
    "  float Cr = u - 0.5;\n"
    "  r = y_rgb + 1.793 * Cr;\n"
    "  g = y_rgb - 0.2126 * Cb - 0.534 * Cr;\n"
    "  b = y_rgb + 2.115 * Cb;\n";

// ITU-R BT.601, with the same exchange.
const char kBt601[] =
    "  float y_rgb = 1.1643 * (y - 0.0625);\n"
    "  float Cb = v - 0.5;\n"
    "  float Cr = u - 0.5;\n"
    "  r = y_rgb + 1.5958 * Cr;\n"
    "  g = y_rgb - 0.39173 * Cb - 0.81290 * Cr;\n"
    "  b = y_rgb + 2.018 * Cb;\n";

// The fixed-point arithmetic that the writing tool of this name encodes for, step by step: its
// files only come out right when the rounding is repeated.
const char kTessarel[] =
    "   y = 16.0/255.0 + y * (235.0-16.0)/255.0;\n"
    "   u = 16.0/255.0 + u * (240.0-16.0)/255.0;\n"
    "   v = 16.0/255.0 + v * (240.0-16.0)/255.0;\n"
    "   float y_rgb = float(int(y*19077.0));\n"
    "   float Cb = v - 128.0/255.0;\n"
    "   float Cr = u - 128.0/255.0;\n"
    "   r = float(int(y_rgb + Cr*29369.0 - 297012.0/255.0)"
    "              / 64) / 256.0;\n"
    "   g = float(int(y_rgb - Cr*8734.0 - (Cb)*3493.0 - 297012.0/255.0)"
    " / 64) / 256.0;\n"
    "   b = float(int(y_rgb + Cb*34610.0 - 297012.0/255.0)"
    "              / 64 )/ 256.0;\n";

const char kFinal[] = "  gl_FragColor = vec4(r, g, b, 255);";

} // namespace

YuvConverterImp::YuvConverterImp(const QString &sampling, const QString &color)
{
    m_source.addHeader(QStringLiteral("#version 120"));
    m_source.addHeader(QStringLiteral("#extension GL_ARB_texture_rectangle : enable"));
    m_source.addUniform(QStringLiteral("int"), QStringLiteral("width"));
    m_source.addUniform(QStringLiteral("int"), QStringLiteral("height"));
    m_source.addSampler(GL_TEXTURE_RECTANGLE, QStringLiteral("yuv"));
    m_source.addLocal(QStringLiteral("float"), QStringLiteral("r, g, b"));
    m_source.addLocal(QStringLiteral("float"), QStringLiteral("y, u, v"));
    m_source.addLocal(QStringLiteral("float"), QStringLiteral("ux, uy"));
    m_source.addUserCode(sampling);
    m_source.addUserCode(color);
    m_source.addFinalCode(QString::fromLatin1(kFinal));

    if (!addShaderFromSourceCode(QOpenGLShader::Vertex, kVertexShader)
        || !addShaderFromSourceCode(QOpenGLShader::Fragment, m_source.text()) || !link()) {
        QString numbered;
        int number = 0;
        for (const QString &line : m_source.text().split(QLatin1Char('\n')))
            numbered += QStringLiteral("%1: %2\n").arg(++number, 3).arg(line);
        qCWarning(lcYuvShader).noquote() << "YUV converter:" << log() << '\n' << numbered;
        return;
    }
    m_vertexLocation = attributeLocation("vertex");
    m_matrixLocation = uniformLocation("matrix");
    m_widthLocation = uniformLocation("width");
    m_heightLocation = uniformLocation("height");
    m_yuvLocation = uniformLocation("yuv");
}

YuvConverterImp::~YuvConverterImp() = default;

QString YuvConverterImp::colorCode(ColorMatrix matrix, bool studioRange)
{
    const char *formula = matrix == ColorMatrix::Bt601 ? kBt601 : kBt709;
    const QString expand = QString::fromLatin1(formula);
    return studioRange ? expand : QString::fromLatin1(kFullToStudioRange) + expand;
}

QString YuvConverterImp::tessarelCode()
{
    return QString::fromLatin1(kTessarel);
}

void YuvConverterImp::convert(QOpenGLFunctions_2_0 *gl, GLuint texture, int width, int height)
{
    if (!isLinked())
        return;
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_RECTANGLE, texture);
    gl->glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glViewport(0, 0, width, height);

    bind();
    setUniformValue(m_yuvLocation, 0);
    setUniformValue(m_widthLocation, width);
    setUniformValue(m_heightLocation, height);
    const float right = static_cast<float>(width);
    const float bottom = static_cast<float>(height);
    m_quad = {QVector2D(0, 0), QVector2D(right, 0), QVector2D(right, bottom), QVector2D(0, bottom)};
    QMatrix4x4 matrix;
    matrix.ortho(0, right, 0, bottom, -1, 1);
    setUniformValue(m_matrixLocation, matrix);
    enableAttributeArray(m_vertexLocation);
    setAttributeArray(m_vertexLocation, m_quad.data());
    gl->glDrawArrays(GL_TRIANGLE_FAN, 0, static_cast<GLsizei>(m_quad.size()));
    disableAttributeArray(m_vertexLocation);
    release();
    gl->glBindTexture(GL_TEXTURE_RECTANGLE, 0);
}
