// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/TextureImp.h"

namespace {

std::size_t componentsOf(GLenum format)
{
    switch (format) {
    case GL_RGB:
    case GL_BGR:
        return 3;
    case GL_RED:
        return 1;
    default:
        return 4;
    }
}

std::size_t sampleSizeOf(GLenum type)
{
    switch (type) {
    case GL_UNSIGNED_BYTE:
        return 1;
    case GL_UNSIGNED_SHORT:
        return 2;
    default:
        return 4;
    }
}

} // namespace

std::size_t TextureImp::pixelSize(GLenum format, GLenum type)
{
    return componentsOf(format) * sampleSizeOf(type);
}

std::size_t TextureImp::rowSize(int width, GLenum format, GLenum type)
{
    const std::size_t bytes = static_cast<std::size_t>(width) * pixelSize(format, type);
    return (bytes + 3) / 4 * 4;
}
