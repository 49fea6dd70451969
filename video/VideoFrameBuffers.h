// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where the planes of a picture lie in memory and in the texture that they are moved into.

#include "video/Texture.h"
#include "video/VideoFormat.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>

/// How a picture's planes lie in one block of memory. Pitches, offsets and sizes are in bytes.
struct FrameLayout
{
    VideoFormat format = VideoFormat::None;
    int bitsPerPixel = 0;
    std::array<unsigned, 3> pitches{};
    std::array<unsigned, 3> lines{};
    std::array<std::size_t, 3> offsets{};
    /// All planes together.
    std::size_t totalSize = 0;
    /// The texture that holds the block, and the bytes of one of its texels.
    int bytesPerTexel = 0;
    int textureWidth = 0;
    int textureHeight = 0;

    int planeCount() const;

    /// The layout of a picture of `width` by `height` pixels. Formats with half the chroma across
    /// need an even width. A size or format that cannot be laid out gives a `totalSize` of 0.
    static FrameLayout make(VideoFormat format, int width, int height);
    /// The width to lay out for a picture of `width` pixels. Chroma rows only share the luma's
    /// rows evenly when these are of even length.
    static int paddedWidth(VideoFormat format, int width);
};

/// The memory for one picture and the texture that it ends in. Every operation, construction and
/// destruction included, needs the same context current. From the second picture on, the frame
/// road from map() to commit() allocates nothing.
class VideoFrameBuffers
{
public:
    VideoFrameBuffers();
    ~VideoFrameBuffers();
    VideoFrameBuffers(const VideoFrameBuffers &) = delete;
    VideoFrameBuffers &operator=(const VideoFrameBuffers &) = delete;

    /// Lays out pictures of this kind; once per object. False when the size is beyond the driver's
    /// limits. The memory and the texture are made with the first picture, unless the driver
    /// dictates the layout.
    bool setUp(VideoFormat format, int width, int height);

    const FrameLayout &layout() const { return m_layout; }

    Texture::Transfer transfer() const { return m_texture.transfer(); }

    /// 0 before the first picture, and when the texture or its memory could not be made.
    GLuint textureId() const { return m_usable ? m_texture.textureId() : 0; }

    /// Where the planes of the next picture are to be written. A picture that was begun and not
    /// committed is forgotten. When the driver gives no memory the picture goes to waste. `still`
    /// says that it is probably the one before once more.
    std::array<void *, 3> map(bool still = false);
    /// Moves the picture into the texture. With `wait` the upload is ordered before whatever
    /// follows. False when it was mapped as a still one and the texture holds it already. Nothing
    /// happens when no picture was begun.
    bool commit(bool wait);

private:
    bool create();
    void begin();
    std::size_t memorySize() const;
    std::unique_ptr<unsigned char[]> allocateMemory() const;

    FrameLayout m_layout;
    Texture m_texture;
    bool m_created = false;
    bool m_usable = false; // created, and a picture can be written
    bool m_async = false;
    GLenum m_target = 0;
    GLint m_internalFormat = 0;
    GLenum m_pixelFormat = 0;
    std::unique_ptr<unsigned char[]> m_client; // null where the driver gives the memory
    // For a picture that the driver has no memory for, or one that stands still: the driver's is
    // not for reading.
    std::unique_ptr<unsigned char[]> m_own;
    bool m_still = false; // the picture being written is in m_own, and may be wanted
    std::optional<std::size_t> m_hash; // of the texture's picture, where that stands still
    void *m_begun = nullptr; // the texture's next memory; null: none, or none begun
};
