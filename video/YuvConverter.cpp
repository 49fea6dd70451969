// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/YuvConverter.h"

#include "video/VideoFormat.h"
#include "video/YuvRgbConverters.h"

YuvConverter::YuvConverter(int sourceFourcc, int targetFourcc, int studioRange, int tessarel)
{
    if (targetFourcc != fourcc("RGBA") || !initializeOpenGLFunctions())
        return;
    switch (sourceFourcc) {
    case fourcc("NV12"):
        m_imp = std::make_unique<NV12_RGB_Converter>(studioRange, tessarel);
        break;
    case fourcc("YUYV"):
        m_imp = std::make_unique<YUYV_RGB_Converter>(studioRange);
        break;
    case fourcc("UYVY"):
        m_imp = std::make_unique<UYVY_RGB_Converter>(studioRange);
        break;
    case fourcc("I420"):
        m_imp = std::make_unique<I420_RGB_Converter>(studioRange, tessarel);
        break;
    case fourcc("YV12"):
        m_imp = std::make_unique<YV12_RGB_Converter>(studioRange, tessarel);
        break;
    }
}

YuvConverter::~YuvConverter() = default;

bool YuvConverter::isValid() const
{
    return m_imp && m_imp->isLinked();
}

void YuvConverter::convert(GLuint texture, int width, int height)
{
    if (m_imp)
        m_imp->convert(this, texture, width, height);
}
