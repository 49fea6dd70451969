// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/YuvRgbConverters.h"

namespace {

// Luma rows, then rows of interleaved chroma pairs, one pair for two by two pixels.
const char kSampleNv12[] =
    "   y  = texture2DRect(yuv, gl_FragCoord.xy).r;\n"
    "   uy = float(int(gl_FragCoord.y / 2.0));\n"
    "   ux = float(int(gl_FragCoord.x / 2.0));\n"
    "   u  = texture2DRect(yuv, vec2(2.0*ux, height + uy)).r;\n"
    "   v  = texture2DRect(yuv, vec2(2.0*ux + 1.0, height + uy)).r;\n";

// Luma rows, then the two chroma planes, two lines of each to a row of the texture. `uy` is cut
// to a whole number before its fraction is asked for, so the half-row shift never happens and
// every second chroma line is left out. A panorama shows far fewer pixels than its source
// has, so this stays for the sake of equal pictures everywhere.
const char kSampleI420[] =
    "   y  = texture2DRect(yuv, gl_FragCoord.xy).r;\n"
    "   ux = float(int(gl_FragCoord.x / 2.0));\n"
    "   uy = float(int(gl_FragCoord.y / 4.0));\n"
    "   ux += (uy - float(int(uy)))*width;\n"
    "   u  = texture2DRect(yuv, vec2(ux, height + uy)).r;\n"
    "   v  = texture2DRect(yuv, vec2(ux, float(int(height*1.25 + 0.5)) + uy)).r;\n";

// As above with the planes exchanged.
const char kSampleYv12[] =
    "   y  = texture2DRect(yuv, gl_FragCoord.xy).r;\n"
    "   ux = float(int(gl_FragCoord.x / 2.0));\n"
    "   uy = float(int(gl_FragCoord.y / 4.0));\n"
    "   ux += (uy - float(int(uy)))*width;\n"
    "   v  = texture2DRect(yuv, vec2(ux, height + uy)).r;\n"
    "   u  = texture2DRect(yuv, vec2(ux, float(int(height*1.25 + 0.5)) + uy)).r;\n";

// Four bytes for two pixels side by side: Y U Y V.
const char kSampleYuyv[] =
    "   ux = gl_FragCoord.x / 2.0;\n"
    "   uy = gl_FragCoord.y;\n"
    "   y = texture2DRect(yuv, vec2((gl_FragCoord.x - 0.5)*2.0 + 0.5, uy)).r;\n"
    "   u = texture2DRect(yuv, vec2(float(int(ux))*4.0 + 1.5, uy)).r;\n"
    "   v = texture2DRect(yuv, vec2(float(int(ux))*4.0 + 3.5, uy)).r;\n";

// Four bytes for two pixels side by side: U Y V Y.
const char kSampleUyvy[] =
    "   ux = gl_FragCoord.x / 2.0;\n"
    "   uy = gl_FragCoord.y;\n"
    "   y = texture2DRect(yuv, vec2((gl_FragCoord.x - 0.5)*2.0 + 1.5, uy)).r;\n"
    "   u = texture2DRect(yuv, vec2(float(int(ux))*4.0 + 0.5, uy)).r;\n"
    "   v = texture2DRect(yuv, vec2(float(int(ux))*4.0 + 2.5, uy)).r;\n";

QString color(bool studioRange, bool tessarel)
{
    return tessarel ? YuvConverterImp::tessarelCode()
                    : YuvConverterImp::colorCode(YuvConverterImp::ColorMatrix::Bt709, studioRange);
}

} // namespace

NV12_RGB_Converter::NV12_RGB_Converter(bool studioRange, bool tessarel)
    : YuvConverterImp(QString::fromLatin1(kSampleNv12), color(studioRange, tessarel))
{ }

NV12_RGB_Converter::~NV12_RGB_Converter() = default;

YUYV_RGB_Converter::YUYV_RGB_Converter(bool studioRange)
    : YuvConverterImp(QString::fromLatin1(kSampleYuyv), color(studioRange, false))
{ }

YUYV_RGB_Converter::~YUYV_RGB_Converter() = default;

UYVY_RGB_Converter::UYVY_RGB_Converter(bool studioRange)
    : YuvConverterImp(QString::fromLatin1(kSampleUyvy), color(studioRange, false))
{ }

UYVY_RGB_Converter::~UYVY_RGB_Converter() = default;

I420_RGB_Converter::I420_RGB_Converter(bool studioRange, bool tessarel)
    : YuvConverterImp(QString::fromLatin1(kSampleI420), color(studioRange, tessarel))
{ }

I420_RGB_Converter::~I420_RGB_Converter() = default;

YV12_RGB_Converter::YV12_RGB_Converter(bool studioRange, bool tessarel)
    : YuvConverterImp(QString::fromLatin1(kSampleYv12), color(studioRange, tessarel))
{ }

YV12_RGB_Converter::~YV12_RGB_Converter() = default;
