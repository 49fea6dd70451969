// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program that turns the bytes of a YUV picture into RGB, common to all its layouts.

#include "video/ShaderSource.h"

#include <QMatrix4x4>
#include <QOpenGLShaderProgram>
#include <QVector2D>

#include <array>

class QOpenGLFunctions_2_0;

/// Reads the picture from a rectangle texture of single bytes and draws it, red and blue
/// exchanged, pixel by pixel. A program that the driver does not take is not linked, and drawing
/// then does nothing. Made, used and deleted with the same context current.
class YuvConverterImp : public QOpenGLShaderProgram
{
public:
    ~YuvConverterImp() override;

    /// Draws `texture` over the framebuffer that is bound, whose size is given in pixels.
    void convert(QOpenGLFunctions_2_0 *gl, GLuint texture, int width, int height);

    const ShaderSource &source() const { return m_source; }

    /// The published matrices between YUV and RGB.
    enum class ColorMatrix {
        Bt709,
        Bt601
    };

    /// Statements that set r, g and b, with red and blue exchanged. `studioRange`: luma runs from
    /// 16 to 235 and chroma from 16 to 240 of 255; otherwise both use all levels.
    static QString colorCode(ColorMatrix matrix, bool studioRange);
    /// The same in the arithmetic of one writing tool, for signals that use all levels.
    static QString tessarelCode();

protected:
    /// `sampling` are the statements that set y, u and v, each from 0 to 1, for a pixel; `color`
    /// those that make r, g and b of them.
    YuvConverterImp(const QString &sampling, const QString &color);

private:
    ShaderSource m_source;
    // Looked up once, at linking.
    int m_vertexLocation = -1;
    int m_matrixLocation = -1;
    int m_widthLocation = -1;
    int m_heightLocation = -1;
    int m_yuvLocation = -1;
    std::array<QVector2D, 4> m_quad;
};
