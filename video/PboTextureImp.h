// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The usual way: the decoder writes into a mapped pixel buffer, and the driver copies from there
// into the texture. Orphaning the buffer at a map lets the driver hand out fresh memory while the
// previous picture may still be on its way. A picture that was waited for has arrived, and its
// memory serves again: fresh memory is a third of a frame's cost where it has to be cleared first.

#include "video/TextureImp.h"

class QOpenGLFunctions_2_1;
class QOpenGLFunctions_3_2_Core;

class PboTextureImp final : public TextureImp
{
public:
    /// `fences` is null on contexts before 3.2; uploads are then never fenced.
    PboTextureImp(bool asyncUpload, QOpenGLFunctions_2_1 *functions,
                  QOpenGLFunctions_3_2_Core *fences);

    bool create() override;
    void destroy() override;
    bool allocate(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                  GLenum type) override;
    void upload(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                GLenum type, const void *data) override;

    bool isValid() const override { return m_texture != 0 && m_buffer != 0; }

    GLuint textureId() const override { return m_texture; }

    void *map(int *stride) override;
    void unmap() override;
    /// Blocks until the card has taken the last fenced upload, one second at most.
    void wait() override;
    void setAsyncUpload(bool asyncUpload) override;

private:
    QOpenGLFunctions_2_1 *m_gl; // the context's
    QOpenGLFunctions_3_2_Core *m_fences; // the context's, or null
    std::size_t m_size = 0;
    GLuint m_texture = 0;
    GLuint m_buffer = 0;
    GLsync m_fence = nullptr;
    bool m_idle = false; // nobody writes into the buffer's storage nor reads it
};
