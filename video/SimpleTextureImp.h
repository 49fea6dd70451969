// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The last resort, for contexts without pixel buffers: the whole picture is handed to the driver
// from client memory at every frame.

#include "video/TextureImp.h"

class QOpenGLFunctions_1_1;

class SimpleTextureImp final : public TextureImp
{
public:
    SimpleTextureImp(bool asyncUpload, QOpenGLFunctions_1_1 *functions);

    bool create() override;
    void destroy() override;
    bool allocate(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                  GLenum type) override;
    void upload(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                GLenum type, const void *data) override;

    bool isValid() const override { return m_texture != 0; }

    GLuint textureId() const override { return m_texture; }

    void *map(int *stride) override;

    void unmap() override { }

    void wait() override;

private:
    QOpenGLFunctions_1_1 *m_gl; // the context's
    GLuint m_texture = 0;
};
