// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/IntelMapTextureImp.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions_3_0>

namespace {

constexpr GLenum kMemoryLayout = 0x83FF; // GL_TEXTURE_MEMORY_LAYOUT_INTEL
constexpr GLint kLayoutLinear = 1;

template <typename Function> void resolve(Function &function, const char *name)
{
    function = reinterpret_cast<Function>(QOpenGLContext::currentContext()->getProcAddress(name));
}

} // namespace

IntelMapTextureImp::IntelMapTextureImp(bool asyncUpload, QOpenGLFunctions_3_0 *functions)
    : TextureImp(asyncUpload)
    , m_gl(functions)
{ }

bool IntelMapTextureImp::create()
{
    resolve(m_sync, "glSyncTextureINTEL");
    resolve(m_unmap, "glUnmapTexture2DINTEL");
    resolve(m_map, "glMapTexture2DINTEL");
    m_gl->glGenTextures(1, &m_texture);
    return isValid();
}

void IntelMapTextureImp::destroy()
{
    m_gl->glDeleteTextures(1, &m_texture);
    m_texture = 0;
}

bool IntelMapTextureImp::allocate(GLenum target, GLint, int width, int height, GLenum format,
                                  GLenum type)
{
    m_gl->glBindTexture(target, m_texture);
    m_gl->glTexParameteri(target, kMemoryLayout, kLayoutLinear);
    m_gl->glTexImage2D(target, 0, GL_RGBA8, width, height, 0, format, type, nullptr);
    m_gl->glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    m_gl->glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    m_gl->glTexParameteri(target, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    m_gl->glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    m_gl->glBindTexture(target, 0);
    return isValid();
}

void IntelMapTextureImp::upload(GLenum, GLint, int, int, GLenum, GLenum, const void *)
{
    m_sync(m_texture);
}

void *IntelMapTextureImp::map(int *stride)
{
    GLint rowBytes = 0;
    GLenum layout = 0;
    void *memory = m_map(m_texture, 0, GL_MAP_WRITE_BIT, &rowBytes, &layout);
    if (memory && stride)
        *stride = rowBytes;
    return memory;
}

void IntelMapTextureImp::unmap()
{
    m_unmap(m_texture, 0);
}
