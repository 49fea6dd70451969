// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PicturePrefetch.h"

#include "app/ImageInspector.h"

#include <QImageReader>

namespace {

// Nearly every GPU takes textures of this size. A larger picture is better decoded when the GPU's
// limit is known, because it may then be scaled while it is decoded.
constexpr int kMaxSide = 8192;

QImage decode(const QString &path)
{
    if (!ImageInspector::canBeDecoded(path))
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
    if (size.isValid() && (size.width() > limit.width() || size.height() > limit.height()))
        reader.setScaledSize(size.scaled(limit, Qt::KeepAspectRatio));
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
    else if (picture.width() > requestedSize.width() || picture.height() > requestedSize.height())
        picture = picture.scaled(requestedSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    *size = picture.size();
    return picture;
}
