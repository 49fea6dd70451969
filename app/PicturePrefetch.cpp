// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PicturePrefetch.h"

#include "app/ImageInspector.h"
#include "app/MediaFormats.h"

#include <QImageReader>

namespace {

// Nearly every GPU takes textures of this size. A larger picture is better decoded when the GPU's
// limit is known, because it may then be scaled while it is decoded.
constexpr int kMaxSide = 8192;

/// The size that fits into \a limit, whose sides of 0 or less are none.
QSize fitted(const QSize &size, const QSize &limit)
{
    const QSize bound(limit.width() > 0 ? limit.width() : size.width(),
                      limit.height() > 0 ? limit.height() : size.height());
    const bool fits = size.width() <= bound.width() && size.height() <= bound.height();
    return fits ? size : size.scaled(bound, Qt::KeepAspectRatio);
}

QImage decode(const QString &path)
{
    // What the media road refuses by its name need not be decoded.
    if (!MediaFormats::isImage(QUrl::fromLocalFile(path)) || !ImageInspector::canBeDecoded(path))
        return {};
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > kMaxSide || size.height() > kMaxSide)
        return {};
    return reader.read();
}

QImage decodeWithin(const QString &path, const QSize &limit)
{
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid() && fitted(size, limit) != size)
        reader.setScaledSize(fitted(size, limit));
    return reader.read();
}

} // namespace

const QString PicturePrefetch::kName = QStringLiteral("prefetched");

PicturePrefetch::PicturePrefetch(const QString &path)
    : QQuickImageProvider(Image, ForceAsynchronousImageLoading)
    , m_path(path)
    , m_picture(std::async(std::launch::async, decode, path))
{ }

PicturePrefetch::~PicturePrefetch() = default;

QUrl PicturePrefetch::source(const QUrl &file)
{
    if (m_taken || file.toLocalFile() != m_path)
        return file;
    m_taken = true;
    return QUrl(QStringLiteral("image://%1/picture").arg(kName));
}

QImage PicturePrefetch::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    Q_UNUSED(id)
    const std::lock_guard lock(m_mutex);
    QImage picture = m_picture.valid() ? m_picture.get() : QImage();
    if (picture.isNull())
        picture = decodeWithin(m_path, requestedSize);
    else if (fitted(picture.size(), requestedSize) != picture.size())
        picture = picture.scaled(fitted(picture.size(), requestedSize), Qt::IgnoreAspectRatio,
                                 Qt::SmoothTransformation);
    *size = picture.size();
    return picture;
}
