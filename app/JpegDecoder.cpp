// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/JpegDecoder.h"

#include <QFile>
#include <QFileInfo>

#include <sys/mman.h>
#include <turbojpeg.h>

#include <cstdlib>
#include <memory>
#include <type_traits>

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

} // namespace

QImage decode(const QString &path, int maxSide)
{
    QFile file(path);
    // Not a pipe: nobody may ever write to it.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray data = file.readAll();
    const std::unique_ptr<std::remove_pointer_t<tjhandle>, Release> decoder(tjInitDecompress());
    const auto *bytes = reinterpret_cast<const unsigned char *>(data.constData());
    const auto size = static_cast<unsigned long>(data.size());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (!decoder
        || tjDecompressHeader3(decoder.get(), bytes, size, &width, &height, &subsampling, &colours)
            != 0
        || (colours != TJCS_YCbCr && colours != TJCS_GRAY) || width > maxSide || height > maxSide)
        return {};
    QImage picture = emptyPicture(width, height);
    if (picture.isNull())
        return {};
    constexpr bool kLittleEndian = Q_BYTE_ORDER == Q_LITTLE_ENDIAN;
    if (tjDecompress2(decoder.get(), bytes, size, picture.bits(), width, picture.bytesPerLine(),
                      height, kLittleEndian ? TJPF_BGRA : TJPF_ARGB, TJFLAG_STOPONWARNING)
        != 0)
        return {};
    return picture;
}

} // namespace JpegDecoder
