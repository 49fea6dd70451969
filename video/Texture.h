// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A texture that decoded pictures are moved into, by the best way that the context offers.

#include <QString>
#include <qopengl.h>

#include <memory>

class TextureImp;

/// Every operation, construction and destruction included, needs the same context current. Where
/// no way could be set up, each operation answers 0, false or null and has no effect.
class Texture
{
public:
    enum Transfer {
        None = 0,
        Simple = 1,
        PixelBuffer = 2,
        IntelMap = 3,
        PinnedMemory = 4
    };

    /// `asyncUpload` asks for uploads that the caller does not wait for, which alone makes pinned
    /// memory worth its set-up.
    explicit Texture(bool asyncUpload);
    ~Texture();
    Texture(const Texture &) = delete;
    Texture &operator=(const Texture &) = delete;

    /// The way that was chosen, also where its set-up failed.
    Transfer transfer() const { return m_transfer; }

    bool create();
    void destroy();
    bool allocate(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                  GLenum type);
    /// `waitRequested` says that wait() will be called for this upload.
    void upload(bool waitRequested, GLenum target, GLint internalFormat, int width, int height,
                GLenum format, GLenum type, const void *data);
    bool isValid() const;
    GLuint textureId() const;
    void *map(int *stride);
    void unmap();
    void wait();

    /// The way's name for the interface; empty for None.
    static QString transferName(int transfer);

private:
    std::unique_ptr<TextureImp> m_imp;
    Transfer m_transfer = None;
};
