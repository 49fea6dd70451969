// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Transfer through pages of our own that the card reads directly ("GL_AMD_pinned_memory"): one
// copy by us, none by the driver.

#include "video/TextureImp.h"

#include <memory>

class QOpenGLFunctions_3_2_Core;

class PinnedMemoryTextureImp final : public TextureImp
{
public:
    PinnedMemoryTextureImp(bool asyncUpload, QOpenGLFunctions_3_2_Core *functions);

    bool create() override;
    void destroy() override;
    bool allocate(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                  GLenum type) override;
    void upload(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                GLenum type, const void *data) override;

    bool isValid() const override { return m_texture != 0 && m_buffer != 0; }

    GLuint textureId() const override { return m_texture; }

    void *map(int *stride) override;

    void unmap() override { }

    /// Lets the card wait, not the caller: what it is given next comes after the last upload.
    void wait() override;

private:
    QOpenGLFunctions_3_2_Core *m_gl; // the context's
    std::unique_ptr<unsigned char[]> m_raw;
    unsigned char *m_aligned = nullptr; // first page boundary in m_raw
    GLuint m_texture = 0;
    GLuint m_buffer = 0;
    GLsync m_fence = nullptr;
};
