// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/JpegDecoder.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <turbojpeg.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <vector>

namespace JpegDecoder {

namespace {

struct Release
{
    void operator()(void *handle) const { tjDestroy(handle); }
};

/// A picture without content, whose large memory lies in large pages where the system has them:
/// the first touch of a hundred megabytes in small ones takes as long as decoding half of them.
QImage emptyPicture(int width, int height)
{
    constexpr size_t kLargePage = 2U << 20;
    constexpr int kBytesPerPixel = 4;
    const size_t size = size_t(width) * size_t(height) * kBytesPerPixel;
    const size_t rounded = (size + kLargePage - 1) / kLargePage * kLargePage;
    void *memory = std::aligned_alloc(kLargePage, rounded);
    if (!memory)
        return {};
    // Only advice: the small pages of a refusal do as well.
    madvise(memory, rounded, MADV_HUGEPAGE);
    return QImage(static_cast<uchar *>(memory), width, height, width * kBytesPerPixel,
                  QImage::Format_RGB32, std::free, memory);
}

struct Close
{
    void operator()(std::FILE *file) const { std::fclose(file); }
};

/// All bytes of a regular file; none of anything else, nor of one that is larger than a picture of
/// the sides that this program decodes can be. Qt's file belongs to the application object.
std::vector<unsigned char> contentOf(const QByteArray &path)
{
    constexpr off_t kLargest = 256 << 20;
    struct stat info = {};
    // Not a pipe: nobody may ever write to it.
    if (stat(path.constData(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size > kLargest)
        return {};
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.constData(), "rb"));
    std::vector<unsigned char> content(file ? size_t(info.st_size) : 0);
    if (!content.empty())
        content.resize(std::fread(content.data(), 1, content.size(), file.get()));
    return content;
}

} // namespace

QImage decode(const QByteArray &path, int maxSide)
{
    const std::vector<unsigned char> data = contentOf(path);
    const std::unique_ptr<std::remove_pointer_t<tjhandle>, Release> decoder(tjInitDecompress());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (!decoder
        || tjDecompressHeader3(decoder.get(), data.data(), data.size(), &width, &height,
                               &subsampling, &colours)
            != 0
        || (colours != TJCS_YCbCr && colours != TJCS_GRAY) || width > maxSide || height > maxSide)
        return {};
    QImage picture = emptyPicture(width, height);
    if (picture.isNull())
        return {};
    constexpr bool kLittleEndian = Q_BYTE_ORDER == Q_LITTLE_ENDIAN;
    if (tjDecompress2(decoder.get(), data.data(), data.size(), picture.bits(), width,
                      picture.bytesPerLine(), height, kLittleEndian ? TJPF_BGRA : TJPF_ARGB,
                      TJFLAG_STOPONWARNING)
        != 0)
        return {};
    return picture;
}

} // namespace JpegDecoder
