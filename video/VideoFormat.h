// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The pixel formats in which libvlc delivers pictures.

#include <QString>

/// The numbers are the codes under which the formats are known to frames and statistics.
enum class VideoFormat {
    None = 0,
    BGRA = 1,
    RV32 = 2,
    YUYV = 3,
    UYVY = 4,
    I420 = 5,
    J420 = 6,
    YV12 = 7,
    NV12 = 8
};

constexpr bool isYuv(VideoFormat format)
{
    return format >= VideoFormat::YUYV;
}

/// The bytes of a four-character code as one number, the first in the lowest byte.
constexpr int fourcc(const char (&text)[5])
{
    return text[0] | text[1] << 8 | text[2] << 16 | text[3] << 24;
}

/// The format of a libvlc chroma, given as its four characters; None for all that are not listed.
VideoFormat videoFormatFromChroma(const char *chroma);
/// The format's name for the interface; empty for None.
QString videoFormatName(VideoFormat format);
