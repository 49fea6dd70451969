// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Turns decoded YUV pictures into RGB on the graphics card, in one pass.

#include <QObject>
#include <QOpenGLFunctions_2_0>

#include <memory>

class YuvConverterImp;

/// Made, used and deleted with the same context current.
class YuvConverter : public QObject, protected QOpenGLFunctions_2_0
{
    Q_OBJECT

public:
    /// The four-character codes are "NV12", "YUYV", "UYVY", "I420" or "YV12" for the source, and
    /// "RGBA" for the target; for others, and without OpenGL 2.0, convert() does nothing.
    YuvConverter(int sourceFourcc, int targetFourcc, int studioRange, int tessarel);
    ~YuvConverter() override;

    bool isValid() const;
    /// Draws the picture in `texture`, a rectangle texture of single bytes, over the framebuffer
    /// that is bound, whose size is given in pixels.
    void convert(GLuint texture, int width, int height);

    const YuvConverterImp *imp() const { return m_imp.get(); }

private:
    std::unique_ptr<YuvConverterImp> m_imp;
};
