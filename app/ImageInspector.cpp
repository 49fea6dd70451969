// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ImageInspector.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <unistd.h>

#include <cstring>

namespace ImageInspector {

namespace {

constexpr int kBytesPerPixel = 4;

/// Half of the machine's memory, in bytes: the decoder and the texture each hold a copy.
quint64 memoryForOnePicture()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    constexpr quint64 kUnknown = 1ULL << 30;
    return pages > 0 && pageSize > 0 ? quint64(pages) * quint64(pageSize) / 2 : kUnknown;
}

/// Reads a file byte by byte through a block of its own, so that a file that shrinks while it is
/// read ends early instead of faulting.
class ByteReader
{
public:
    explicit ByteReader(QFile &file)
        : m_file(file)
    { }

    /// The next byte, or -1 at the end.
    int next()
    {
        if (m_position == m_size && !fill())
            return -1;
        return static_cast<unsigned char>(m_block[m_position++]);
    }

    void skip(qint64 count)
    {
        const qint64 inBlock = qMin(count, m_size - m_position);
        m_position += inBlock;
        if (count > inBlock)
            m_file.seek(m_file.pos() + count - inBlock);
    }

    /// Moves behind the next byte of this value; false at the end.
    bool skipPast(char value)
    {
        for (;;) {
            const void *found =
                std::memchr(m_block + m_position, value, size_t(m_size - m_position));
            if (found) {
                m_position = static_cast<const char *>(found) - m_block + 1;
                return true;
            }
            m_position = m_size;
            if (!fill())
                return false;
        }
    }

private:
    bool fill()
    {
        m_position = 0;
        m_size = qMax<qint64>(0, m_file.read(m_block, sizeof m_block));
        return m_size > 0;
    }

    QFile &m_file;
    char m_block[64 * 1024];
    qint64 m_size = 0;
    qint64 m_position = 0;
};

/// True for a frame whose coefficients are all kept until its last scan.
bool isProgressiveJpeg(const QString &path)
{
    // Marker codes of ITU-T T.81, table B.1.
    constexpr int kPrefix = 0xFF;
    constexpr int kFirstFrame = 0xC0;
    constexpr int kLastFrame = 0xCF;
    constexpr int kHuffmanTable = 0xC4;
    constexpr int kExtension = 0xC8;
    constexpr int kArithmeticTable = 0xCC;
    constexpr int kProgressive = 0x2; // the two lower bits of such a frame's code

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    ByteReader reader(file);
    reader.skip(2); // the start of the image
    for (;;) {
        if (reader.next() != kPrefix)
            return false;
        int marker = reader.next();
        while (marker == kPrefix) // fill bytes
            marker = reader.next();
        if (marker >= kFirstFrame && marker <= kLastFrame && marker != kHuffmanTable
            && marker != kExtension && marker != kArithmeticTable)
            return (marker & 3) == kProgressive;
        const int high = reader.next();
        const int low = reader.next();
        if (low < 0)
            return false;
        reader.skip(qMax(0, high * 256 + low - 2));
    }
}

} // namespace

bool canBeDecoded(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile() || !info.isReadable())
        return false;
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    if (!reader.canRead())
        return false;
    const QSize size = reader.size();
    // A JPEG is scaled while it is decoded, unless its scans refine each other; all others are
    // decoded whole.
    if (size.isEmpty() || (reader.format() == "jpeg" && !isProgressiveJpeg(path)))
        return true;
    return quint64(size.width()) * quint64(size.height()) * kBytesPerPixel <= memoryForOnePicture();
}

JpegEnd endOfJpeg(const QString &path)
{
    // Marker codes of ITU-T T.81, table B.1.
    constexpr int kStartOfImage = 0xD8;
    constexpr int kEndOfImage = 0xD9;
    constexpr int kStartOfScan = 0xDA;
    constexpr int kFirstRestart = 0xD0;
    constexpr int kLastRestart = 0xD7;
    constexpr int kPrefix = 0xFF;

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return JpegEnd::Behind;
    ByteReader reader(file);
    if (reader.next() != kPrefix || reader.next() != kStartOfImage)
        return JpegEnd::Behind;

    bool inScan = false;
    JpegEnd cut = JpegEnd::Before; // if the file ends here
    for (;;) {
        if (inScan) {
            if (!reader.skipPast(char(kPrefix)))
                return cut;
        } else {
            const int prefix = reader.next();
            if (prefix < 0)
                return cut;
            // Not a marker where one must be: damaged, but not by its end; the decoder will tell.
            if (prefix != kPrefix)
                return JpegEnd::Behind;
        }
        int marker = reader.next();
        while (marker == kPrefix) // fill bytes
            marker = reader.next();
        if (marker < 0)
            return cut;
        if (marker == kEndOfImage)
            return JpegEnd::Behind;
        // Inside a scan a stuffed zero is picture data, and restart markers have no length.
        if (marker == 0 || (marker >= kFirstRestart && marker <= kLastRestart))
            continue;
        const int high = reader.next();
        const int low = reader.next();
        if (high < 0 || low < 0)
            return cut;
        reader.skip(qMax(0, high * 256 + low - 2));
        inScan = marker == kStartOfScan;
        if (inScan)
            cut = JpegEnd::Within;
    }
}

} // namespace ImageInspector
