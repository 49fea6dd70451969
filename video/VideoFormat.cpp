// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/VideoFormat.h"

#include <cstring>

namespace {

struct Chroma
{
    char name[5];
    VideoFormat format;
};

constexpr Chroma kChromas[] = {
    {"YUYV", VideoFormat::YUYV}, {"YUY2", VideoFormat::YUYV}, {"UYVY", VideoFormat::UYVY},
    {"I420", VideoFormat::I420}, {"IYUY", VideoFormat::I420}, {"J420", VideoFormat::J420},
    {"YV12", VideoFormat::YV12}, {"NV12", VideoFormat::NV12}, {"RV32", VideoFormat::RV32},
    {"BGRA", VideoFormat::BGRA},
};

} // namespace

VideoFormat videoFormatFromChroma(const char *chroma)
{
    for (const Chroma &known : kChromas) {
        if (std::memcmp(chroma, known.name, 4) == 0)
            return known.format;
    }
    return VideoFormat::None;
}

QString videoFormatName(VideoFormat format)
{
    switch (format) {
    case VideoFormat::None:
        return {};
    case VideoFormat::BGRA:
        return QStringLiteral("BGRA");
    case VideoFormat::RV32:
        return QStringLiteral("RV32");
    case VideoFormat::YUYV:
        return QStringLiteral("YUYV");
    case VideoFormat::UYVY:
        return QStringLiteral("UYVY");
    case VideoFormat::I420:
        return QStringLiteral("I420");
    case VideoFormat::J420:
        return QStringLiteral("J420");
    case VideoFormat::YV12:
        return QStringLiteral("YV12");
    case VideoFormat::NV12:
        return QStringLiteral("NV12");
    }
    return {};
}
