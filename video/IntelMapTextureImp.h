// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Transfer without a copy ("GL_INTEL_map_texture"): the texture itself, laid out linearly, is
// mapped, and the decoder writes into it with the stride that the driver dictates.

#include "video/TextureImp.h"

class QOpenGLFunctions_3_0;

class IntelMapTextureImp final : public TextureImp
{
public:
    IntelMapTextureImp(bool asyncUpload, QOpenGLFunctions_3_0 *functions);

    bool create() override;
    void destroy() override;
    /// The texture is always four bytes a pixel.
    bool allocate(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                  GLenum type) override;
    /// The picture is in place already; this only makes it visible to the card.
    void upload(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                GLenum type, const void *data) override;

    bool isValid() const override { return m_texture != 0 && m_sync && m_map && m_unmap; }

    GLuint textureId() const override { return m_texture; }

    void *map(int *stride) override;
    void unmap() override;

    void wait() override { }

private:
    using SyncTexture = void(QOPENGLF_APIENTRYP)(GLuint texture);
    using UnmapTexture = void(QOPENGLF_APIENTRYP)(GLuint texture, GLint level);
    using MapTexture = void *(QOPENGLF_APIENTRYP)(GLuint texture, GLint level, GLbitfield access,
                                                  GLint *stride, GLenum *layout);

    QOpenGLFunctions_3_0 *m_gl; // the context's
    GLuint m_texture = 0;
    SyncTexture m_sync = nullptr;
    UnmapTexture m_unmap = nullptr;
    MapTexture m_map = nullptr;
};
