// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/VideoFrameBuffers.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <string_view>

namespace {

// No driver has textures as large; it keeps every product below within 64 bits.
constexpr int kMaxDimension = 65536;

constexpr unsigned roundUpDivide(std::size_t value, unsigned divisor)
{
    return static_cast<unsigned>((value + divisor - 1) / divisor);
}

} // namespace

int FrameLayout::planeCount() const
{
    switch (format) {
    case VideoFormat::I420:
    case VideoFormat::J420:
    case VideoFormat::YV12:
        return 3;
    case VideoFormat::NV12:
        return 2;
    default:
        return 1;
    }
}

FrameLayout FrameLayout::make(VideoFormat format, int width, int height)
{
    FrameLayout layout;
    if (format == VideoFormat::None || width < 2 || height < 2 || width > kMaxDimension
        || height > kMaxDimension)
        return layout;
    layout.format = format;
    const unsigned w = static_cast<unsigned>(width);
    const unsigned h = static_cast<unsigned>(height);
    if (!isYuv(format)) {
        layout.bitsPerPixel = 32;
        layout.pitches = {4 * w, 0, 0};
        layout.lines = {h, 0, 0};
        layout.bytesPerTexel = 4;
        layout.textureWidth = width;
        layout.textureHeight = height;
        layout.totalSize = std::size_t{4} * w * h;
        return layout;
    }
    layout.bytesPerTexel = 1;
    if (format == VideoFormat::YUYV || format == VideoFormat::UYVY) {
        // The converter addresses single bytes, so each is a texel of its own.
        layout.bitsPerPixel = 32;
        layout.pitches = {w / 2 * 4, 0, 0};
        layout.lines = {h, 0, 0};
        layout.textureWidth = static_cast<int>(layout.pitches[0]);
        layout.textureHeight = height;
        layout.totalSize = std::size_t{layout.pitches[0]} * h;
        return layout;
    }
    layout.bitsPerPixel = 12;
    layout.textureWidth = width;
    const unsigned chromaLines = h / 2;
    const std::size_t lumaSize = std::size_t{w} * h;
    // Decoders round the chroma of an odd height up to one line more than is laid out, and it must
    // find room behind the last plane.
    const unsigned writtenLines = (h + 1) / 2;
    layout.offsets[1] = lumaSize;
    if (format == VideoFormat::NV12) {
        layout.pitches = {w, w, 0};
        layout.lines = {h, chromaLines, 0};
        layout.totalSize = lumaSize + std::size_t{w} * chromaLines;
        if (chromaLines % 2)
            layout.totalSize += w;
        layout.textureHeight =
            static_cast<int>(h + std::max(writtenLines, chromaLines + chromaLines % 2));
        return layout;
    }
    const unsigned chromaPitch = w / 2;
    layout.pitches = {w, chromaPitch, chromaPitch};
    layout.lines = {h, chromaLines, chromaLines};
    // Two chroma lines share a row of the texture. After an odd number of them half a row stays
    // free, so that plane 2 too begins with a row, where the converter looks for it.
    layout.offsets[2] = lumaSize + std::size_t{chromaPitch} * (chromaLines + chromaLines % 2);
    layout.totalSize = layout.offsets[2] + std::size_t{chromaPitch} * chromaLines;
    layout.textureHeight = static_cast<int>(
        roundUpDivide(layout.offsets[2] + std::size_t{chromaPitch} * writtenLines, w));
    return layout;
}

int FrameLayout::paddedWidth(VideoFormat format, int width)
{
    return isYuv(format) ? width + width % 2 : width;
}

// Pinned memory would need an upload that nobody waits for; one frame and one texture are all
// there is, so there is nothing to overlap it with.
VideoFrameBuffers::VideoFrameBuffers()
    : m_texture(false)
{ }

VideoFrameBuffers::~VideoFrameBuffers()
{
    if (m_begun && !m_client)
        m_texture.unmap();
    m_texture.destroy();
}

bool VideoFrameBuffers::setUp(VideoFormat format, int width, int height)
{
    m_layout = FrameLayout::make(format, width, height);
    if (m_layout.totalSize == 0)
        return false;
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    const bool yuv = isYuv(format);
    GLint limit = 0;
    gl->glGetIntegerv(yuv ? GL_MAX_RECTANGLE_TEXTURE_SIZE : GL_MAX_TEXTURE_SIZE, &limit);
    if (m_layout.textureWidth > limit || m_layout.textureHeight > limit)
        return false;
    m_target = yuv ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D;
    // Four-byte pixels go in as they are, blue first: all of libvlc's pictures reach the panorama
    // with red and blue exchanged, which its shader puts right. The fourth byte of RV32 has no
    // meaning and must not become transparency.
    m_pixelFormat = yuv ? GL_RED : GL_RGBA;
    m_internalFormat = yuv ? GL_R8 : format == VideoFormat::RV32 ? GL_RGB8 : GL_RGBA8;
    // Rows lie tight, whatever their length. The context is the decoder's own.
    gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    // A driver that maps its textures dictates the pitch, and tells it with the first mapping.
    return transfer() != Texture::IntelMap || create();
}

bool VideoFrameBuffers::create()
{
    m_created = true;
    if (!m_texture.create()
        || !m_texture.allocate(m_target, m_internalFormat, m_layout.textureWidth,
                               m_layout.textureHeight, m_pixelFormat, GL_UNSIGNED_BYTE))
        return false;
    int stride = 0;
    m_begun = m_texture.map(&stride);
    if (stride > 0)
        m_layout.pitches[0] = static_cast<unsigned>(stride);
    if (!m_begun)
        m_client = allocateMemory();
    m_usable = m_begun || m_client;
    return m_usable;
}

std::size_t VideoFrameBuffers::memorySize() const
{
    return std::size_t{m_layout.pitches[0]} * static_cast<std::size_t>(m_layout.textureHeight);
}

std::unique_ptr<unsigned char[]> VideoFrameBuffers::allocateMemory() const
{
    return std::unique_ptr<unsigned char[]>(new (std::nothrow) unsigned char[memorySize()]());
}

// A picture that was locked and not displayed leaves its memory to the next.
void VideoFrameBuffers::begin()
{
    if (!m_begun && m_usable)
        m_begun = m_client ? m_client.get() : m_texture.map(nullptr);
}

std::array<void *, 3> VideoFrameBuffers::map(bool still)
{
    if (!m_created)
        create();
    if (still && !m_own)
        m_own = allocateMemory();
    m_still = still && m_own;
    if (!m_still)
        begin();
    const bool usesOwn = m_still || !m_begun;
    if (!usesOwn)
        m_own.reset();
    else if (!m_own)
        m_own = allocateMemory(); // the decoder writes in any case
    void *memory = usesOwn ? m_own.get() : m_begun;
    std::array<void *, 3> planes{};
    for (int plane = 0; plane < m_layout.planeCount(); ++plane)
        planes[plane] = static_cast<unsigned char *>(memory) + m_layout.offsets[plane];
    return planes;
}

bool VideoFrameBuffers::commit(bool wait)
{
    std::optional<std::size_t> hash;
    if (m_still) {
        const std::string_view bytes(reinterpret_cast<const char *>(m_own.get()), memorySize());
        hash = std::hash<std::string_view>()(bytes);
        if (hash == m_hash)
            return false;
        begin();
        if (m_begun)
            std::memcpy(m_begun, m_own.get(), memorySize());
    }
    if (!m_begun)
        return true;
    m_hash = hash;
    m_async = wait;
    if (!m_client)
        m_texture.unmap();
    m_begun = nullptr;
    m_texture.upload(m_async, m_target, m_internalFormat, m_layout.textureWidth,
                     m_layout.textureHeight, m_pixelFormat, GL_UNSIGNED_BYTE, m_client.get());
    if (m_async)
        m_texture.wait();
    return true;
}
