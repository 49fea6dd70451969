// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/SimpleTextureImp.h"

#include <QOpenGLFunctions_1_1>

SimpleTextureImp::SimpleTextureImp(bool asyncUpload, QOpenGLFunctions_1_1 *functions)
    : TextureImp(asyncUpload)
    , m_gl(functions)
{ }

bool SimpleTextureImp::create()
{
    m_gl->glGenTextures(1, &m_texture);
    return isValid();
}

void SimpleTextureImp::destroy()
{
    m_gl->glDeleteTextures(1, &m_texture);
    m_texture = 0;
}

// Each upload gives the texture its storage anew.
bool SimpleTextureImp::allocate(GLenum, GLint, int, int, GLenum, GLenum)
{
    return isValid();
}

void SimpleTextureImp::upload(GLenum target, GLint internalFormat, int width, int height,
                              GLenum format, GLenum type, const void *data)
{
    m_gl->glBindTexture(target, m_texture);
    m_gl->glTexImage2D(target, 0, internalFormat, width, height, 0, format, type, data);
    m_gl->glBindTexture(target, 0);
}

void *SimpleTextureImp::map(int *)
{
    return nullptr;
}

void SimpleTextureImp::wait()
{
    m_gl->glFlush();
}
