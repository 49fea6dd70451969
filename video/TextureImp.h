// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One way of getting a picture from memory into an OpenGL texture. The four ways are subclasses;
// `Texture` chooses between them by what the context offers.

#include <qopengl.h>

#include <cstddef>

/// All operations run on one thread, with the context that was current at construction current
/// again. Sizes are in pixels, strides in bytes.
class TextureImp
{
public:
    explicit TextureImp(bool asyncUpload)
        : m_asyncUpload(asyncUpload)
    { }

    virtual ~TextureImp() = default;
    TextureImp(const TextureImp &) = delete;
    TextureImp &operator=(const TextureImp &) = delete;

    /// Makes the GL objects. False when the driver has given none.
    virtual bool create() = 0;
    /// Deletes the GL objects and frees the memory; create() may follow.
    virtual void destroy() = 0;
    /// Gives the texture and its transfer memory their size.
    virtual bool allocate(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                          GLenum type) = 0;
    /// Moves one picture into the texture. `data` is ignored where map() gives memory.
    virtual void upload(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                        GLenum type, const void *data) = 0;
    virtual bool isValid() const = 0;
    virtual GLuint textureId() const = 0;
    /// Memory to write the next picture into, or null where the caller must bring its own.
    /// `stride`, where given, receives the bytes from row to row when the driver dictates them and
    /// is left alone otherwise.
    virtual void *map(int *stride) = 0;
    virtual void unmap() = 0;
    /// Makes sure that the last upload comes before what follows.
    virtual void wait() = 0;

    /// Whether the uploads that follow leave a fence for wait().
    virtual void setAsyncUpload(bool asyncUpload) { m_asyncUpload = asyncUpload; }

    bool asyncUpload() const { return m_asyncUpload; }

    static std::size_t pixelSize(GLenum format, GLenum type);
    /// Bytes of one row, rounded up to 4.
    static std::size_t rowSize(int width, GLenum format, GLenum type);

private:
    bool m_asyncUpload;
};
