// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/PinnedMemoryTextureImp.h"

#include <QOpenGLFunctions_3_2_Core>

#include <cstring>
#include <new>

namespace {

constexpr GLenum kExternalVirtualMemoryBuffer = 0x9160; // GL_EXTERNAL_VIRTUAL_MEMORY_BUFFER_AMD
constexpr std::size_t kPageSize = 4096; // the extension takes whole pages only

} // namespace

PinnedMemoryTextureImp::PinnedMemoryTextureImp(bool asyncUpload,
                                               QOpenGLFunctions_3_2_Core *functions)
    : TextureImp(asyncUpload)
    , m_gl(functions)
{ }

bool PinnedMemoryTextureImp::create()
{
    m_gl->glGenTextures(1, &m_texture);
    m_gl->glGenBuffers(1, &m_buffer);
    return isValid();
}

void PinnedMemoryTextureImp::destroy()
{
    if (m_fence)
        m_gl->glDeleteSync(m_fence);
    m_fence = nullptr;
    // The buffer goes before the pages that it is made of.
    m_gl->glDeleteTextures(1, &m_texture);
    m_gl->glDeleteBuffers(1, &m_buffer);
    m_texture = 0;
    m_buffer = 0;
    m_raw.reset();
    m_aligned = nullptr;
}

bool PinnedMemoryTextureImp::allocate(GLenum target, GLint internalFormat, int width, int height,
                                      GLenum format, GLenum type)
{
    const std::size_t size = rowSize(width, format, type) * static_cast<std::size_t>(height);
    std::size_t space = size + kPageSize;
    std::unique_ptr<unsigned char[]> raw(new (std::nothrow) unsigned char[space]);
    if (!raw)
        return false;
    void *aligned = raw.get();
    std::align(kPageSize, size, aligned, space);

    m_gl->glBindTexture(target, m_texture);
    m_gl->glTexImage2D(target, 0, internalFormat, width, height, 0, format, type, nullptr);
    m_gl->glBindTexture(target, 0);
    m_gl->glBindBuffer(kExternalVirtualMemoryBuffer, m_buffer);
    m_gl->glBufferData(kExternalVirtualMemoryBuffer, static_cast<GLsizeiptr>(size), aligned,
                       GL_STREAM_DRAW);
    m_gl->glBindBuffer(kExternalVirtualMemoryBuffer, 0);
    // Only now do the buffer's former pages have no reader.
    m_raw = std::move(raw);
    m_aligned = static_cast<unsigned char *>(aligned);
    return isValid();
}

void PinnedMemoryTextureImp::upload(GLenum target, GLint internalFormat, int width, int height,
                                    GLenum format, GLenum type, const void *data)
{
    if (!m_raw && !allocate(target, internalFormat, width, height, format, type))
        return;
    // The rows follow one another without the padding that rowSize() reserves.
    std::memcpy(m_aligned, data,
                pixelSize(format, type) * static_cast<std::size_t>(width)
                    * static_cast<std::size_t>(height));
    m_gl->glBindTexture(target, m_texture);
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, m_buffer);
    m_gl->glTexSubImage2D(target, 0, 0, 0, width, height, format, type, nullptr);
    if (asyncUpload()) {
        if (m_fence)
            m_gl->glDeleteSync(m_fence);
        m_fence = m_gl->glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    }
    m_gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    m_gl->glBindTexture(target, 0);
}

// The pages are filled at upload: a picture may be written while the last one is still read.
void *PinnedMemoryTextureImp::map(int *)
{
    return nullptr;
}

void PinnedMemoryTextureImp::wait()
{
    if (!asyncUpload() || !m_gl->glIsSync(m_fence))
        return;
    m_gl->glWaitSync(m_fence, 0, GL_TIMEOUT_IGNORED);
    m_gl->glDeleteSync(m_fence);
    m_fence = nullptr;
}
