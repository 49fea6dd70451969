// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/PboTextureImp.h"

#include <QOpenGLFunctions_2_1>
#include <QOpenGLFunctions_3_2_Core>

namespace {

constexpr GLuint64 kFenceTimeoutNs = 1000000000;

} // namespace

PboTextureImp::PboTextureImp(bool asyncUpload, QOpenGLFunctions_2_1 *functions,
                             QOpenGLFunctions_3_2_Core *fences)
    : TextureImp(asyncUpload && fences)
    , m_gl(functions)
    , m_fences(fences)
{ }

bool PboTextureImp::create()
{
    m_gl->glGenTextures(1, &m_texture);
    m_gl->glGenBuffers(1, &m_buffer);
    m_gl->glEnable(GL_TEXTURE_2D);
    return isValid();
}

void PboTextureImp::destroy()
{
    if (m_fence)
        m_fences->glDeleteSync(m_fence);
    m_fence = nullptr;
    m_gl->glDeleteTextures(1, &m_texture);
    m_gl->glDeleteBuffers(1, &m_buffer);
    m_texture = 0;
    m_buffer = 0;
}

bool PboTextureImp::allocate(GLenum target, GLint internalFormat, int width, int height,
                             GLenum format, GLenum type)
{
    m_size = rowSize(width, format, type) * static_cast<std::size_t>(height);
    m_gl->glBindTexture(target, m_texture);
    m_gl->glTexImage2D(target, 0, internalFormat, width, height, 0, format, type, nullptr);
    m_gl->glBindTexture(target, 0);
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, m_buffer);
    m_gl->glBufferData(GL_PIXEL_UNPACK_BUFFER, static_cast<GLsizeiptr>(m_size), nullptr,
                       GL_STREAM_DRAW);
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    m_idle = true;
    return isValid();
}

void PboTextureImp::upload(GLenum target, GLint internalFormat, int width, int height,
                           GLenum format, GLenum type, const void *)
{
    m_gl->glBindTexture(target, m_texture);
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, m_buffer);
    m_gl->glTexImage2D(target, 0, internalFormat, width, height, 0, format, type, nullptr);
    if (asyncUpload()) {
        if (m_fence)
            m_fences->glDeleteSync(m_fence);
        m_fence = m_fences->glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    }
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    m_gl->glBindTexture(target, 0);
}

void *PboTextureImp::map(int *)
{
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, m_buffer);
    // New storage also ends the mapping of a picture that was never uploaded.
    if (!m_idle)
        m_gl->glBufferData(GL_PIXEL_UNPACK_BUFFER, static_cast<GLsizeiptr>(m_size), nullptr,
                           GL_STREAM_DRAW);
    m_idle = false;
    return m_gl->glMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY);
}

void PboTextureImp::unmap()
{
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, m_buffer);
    m_gl->glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
}

void PboTextureImp::wait()
{
    if (!asyncUpload() || !m_fences->glIsSync(m_fence))
        return;
    const GLenum result =
        m_fences->glClientWaitSync(m_fence, GL_SYNC_FLUSH_COMMANDS_BIT, kFenceTimeoutNs);
    m_idle = result == GL_ALREADY_SIGNALED || result == GL_CONDITION_SATISFIED;
    m_fences->glDeleteSync(m_fence);
    m_fence = nullptr;
}

void PboTextureImp::setAsyncUpload(bool asyncUpload)
{
    TextureImp::setAsyncUpload(asyncUpload && m_fences);
}
