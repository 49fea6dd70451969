// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One converter for each layout of a YUV picture; they differ only in where they find the bytes of
// a pixel.

#include "video/YuvConverterImp.h"

class NV12_RGB_Converter final : public YuvConverterImp
{
public:
    NV12_RGB_Converter(bool studioRange, bool tessarel);
    ~NV12_RGB_Converter() override;
};

class YUYV_RGB_Converter final : public YuvConverterImp
{
public:
    explicit YUYV_RGB_Converter(bool studioRange);
    ~YUYV_RGB_Converter() override;
};

class UYVY_RGB_Converter final : public YuvConverterImp
{
public:
    explicit UYVY_RGB_Converter(bool studioRange);
    ~UYVY_RGB_Converter() override;
};

class I420_RGB_Converter final : public YuvConverterImp
{
public:
    I420_RGB_Converter(bool studioRange, bool tessarel);
    ~I420_RGB_Converter() override;
};

class YV12_RGB_Converter final : public YuvConverterImp
{
public:
    YV12_RGB_Converter(bool studioRange, bool tessarel);
    ~YV12_RGB_Converter() override;
};
