// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PicturePrefetch.h"

#include "app/DetachedThread.h"
#include "app/ImageInspector.h"
#include "app/JpegDecoder.h"
#include "app/MediaFormats.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

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

bool isUpright(const QString &path)
{
    return QImageReader(path, "jpeg").transformation() == QImageIOHandler::TransformationNone;
}

bool hasJpegName(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg");
}

QImage decodeByPlugin(const QString &path)
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

// The picture is needed last of all that starts; with two processors the window system would often
// wait for its thread otherwise.
constexpr int kNiceness = 5; // added to that of the process

} // namespace

const QString PicturePrefetch::kName = QStringLiteral("prefetched");

/// What the decoding thread and its owner share; the last of them deletes it.
struct PicturePrefetch::Decoding
{
    std::mutex mutex; // guards the members below
    std::condition_variable changed;
    bool mayUsePlugins = false;
    bool isFinished = false;
    QImage picture;

    void run(const QString &path, const QByteArray &jpeg);
};

/// \a jpeg is the path in the file system's encoding, or empty if the name is not that of a JPEG.
void PicturePrefetch::Decoding::run(const QString &path, const QByteArray &jpeg)
{
    QImage result;
    try {
        if (!jpeg.isEmpty())
            result = JpegDecoder::decode(jpeg, kMaxSide);
        {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return mayUsePlugins; });
        }
        if (result.isNull() || !isUpright(path))
            result = decodeByPlugin(path);
    } catch (const std::bad_alloc &) {
        // The media road finds the same, and tells the user.
        result = QImage();
    }
    {
        const std::lock_guard lock(mutex);
        picture = std::move(result);
        isFinished = true;
        changed.notify_all();
    }
    // The media road is about to ask for them, and loads every plug-in then.
    MediaFormats::imageSuffixes();
}

std::unique_ptr<PicturePrefetch> PicturePrefetch::begin(const QString &file)
{
    const QUrl url = MediaFormats::isUrl(file) ? QUrl(file) : QUrl::fromLocalFile(file);
    // A vector image is decoded at the size at which it is shown.
    const bool isVector =
        QFileInfo(url.path()).suffix().startsWith(QLatin1String("svg"), Qt::CaseInsensitive);
    const bool isVideo = MediaFormats::videoKind(url, true) != MediaFormats::NotVideo;
    if (isVector || isVideo || !url.isLocalFile())
        return nullptr;
    return std::make_unique<PicturePrefetch>(url.toLocalFile());
}

PicturePrefetch::PicturePrefetch(const QString &path)
    : QQuickImageProvider(Image, ForceAsynchronousImageLoading)
    , m_path(path)
    , m_decoding(std::make_shared<Decoding>())
{
    const QByteArray jpeg = hasJpegName(path) ? QFile::encodeName(path) : QByteArray();
    const auto decode = [decoding = m_decoding, path, jpeg] { decoding->run(path, jpeg); };
    if (!DetachedThread::start(decode, kNiceness))
        m_decoding->isFinished = true; // and who asks decodes
}

PicturePrefetch::~PicturePrefetch()
{
    continueWithPlugins(); // or the thread would wait for ever
}

void PicturePrefetch::continueWithPlugins()
{
    const std::lock_guard lock(m_decoding->mutex);
    m_decoding->mayUsePlugins = true;
    m_decoding->changed.notify_all();
}

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
    QImage picture;
    {
        std::unique_lock lock(m_decoding->mutex);
        m_decoding->changed.wait(lock, [this] { return m_decoding->isFinished; });
        // The Image keeps it from here on.
        picture = std::exchange(m_decoding->picture, QImage());
    }
    if (picture.isNull())
        picture = decodeWithin(m_path, requestedSize);
    else if (fitted(picture.size(), requestedSize) != picture.size())
        picture = picture.scaled(fitted(picture.size(), requestedSize), Qt::IgnoreAspectRatio,
                                 Qt::SmoothTransformation);
    *size = picture.size();
    return picture;
}
