// SPDX-License-Identifier: GPL-3.0-or-later
// The media half of the controller: from a path to a playing medium, the playlist, the slide show.
#include "app/ImageInspector.h"
#include "app/MediaFormats.h"
#include "app/PicturePrefetch.h"
#include "app/VsplPlaylist.h"
#include "app/VxGlobalObject.h"
#include "settings/VxVlcOptions.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QThreadPool>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(lcMedia, "tavro.media", QtWarningMsg)
Q_LOGGING_CATEGORY(lcTiming, "tavro.timing", QtWarningMsg)

constexpr int kMinResumedImageMs = 3000;

// Names the options of a medium; anything else means the arguments of the instance.
const QLatin1String kMediaOptions("media");

/// The files of a folder, newest first; reads no further than the limit of a playlist.
QFileInfoList directoryEntries(const QString &path)
{
    QFileInfoList entries;
    QDirIterator iterator(path, QDir::Files | QDir::NoSymLinks);
    while (iterator.hasNext() && entries.size() < VxGlobalObject::kMaxDirectoryEntries) {
        iterator.next();
        entries.append(iterator.fileInfo());
    }
    if (entries.size() < VxGlobalObject::kMaxDirectoryEntries)
        entries = QDir(path).entryInfoList(QDir::Files | QDir::NoSymLinks, QDir::Time);
    return entries;
}

QUrl urlOfArgument(const QString &argument)
{
    return MediaFormats::isUrl(argument) ? QUrl(argument) : QUrl::fromLocalFile(argument);
}

} // namespace

void VxGlobalObject::openFile(const QString &url, bool dragAndDrop)
{
    openFiles(QStringList{url}, dragAndDrop);
}

void VxGlobalObject::openFiles(const QStringList &files, bool dragAndDrop)
{
    QList<QUrl> urls;
    for (const QString &file : files)
        urls.append(urlOfArgument(file));
    openFiles(urls, dragAndDrop);
}

void VxGlobalObject::openFiles(QList<QUrl> urls, bool dragAndDrop)
{
    if (urls.isEmpty())
        return;
    QString error;
    if (urls.size() == 1) {
        const QString path = urls.first().toLocalFile();
        const QFileInfo info(path);
        if (info.suffix() == QLatin1String("vspl")) {
            const VsplPlaylist::Result playlist = VsplPlaylist::read(path);
            error = playlist.error;
            urls.clear();
            // Entries of earlier playlists stay: their media may be opened again one by one.
            for (const VsplPlaylist::Entry &entry : playlist.entries) {
                urls.append(entry.media);
                m_logoMap.insert(entry.media, entry.logo);
                m_thumbMap.insert(entry.media, entry.thumb);
                m_stereoMap.insert(entry.media, entry.stereo);
            }
        } else if (!path.isEmpty() && info.isDir()) {
            const QFileInfoList entries = directoryEntries(info.absoluteFilePath());
            if (entries.isEmpty()) {
                error = QStringLiteral("Error : Directory is empty");
            } else if (entries.size() >= kMaxDirectoryEntries) {
                error = QStringLiteral("Error : Cannot load more than %1 files in a directory")
                            .arg(kMaxDirectoryEntries);
            } else {
                urls.clear();
                for (const QFileInfo &entry : entries)
                    urls.append(QUrl::fromLocalFile(entry.absoluteFilePath()));
            }
        }
    }

    clearPlayList();
    if (!error.isEmpty()) {
        processFileSource(QUrl(), error, dragAndDrop);
    } else if (urls.size() < 2) {
        processFileSource(urls.first(), QString(), dragAndDrop);
    } else {
        m_playlist = urls;
        setPlayListIndex(0, dragAndDrop);
        Q_EMIT playListChanged();
    }
}

void VxGlobalObject::processFileSource(const QUrl &source, const QString &error, bool dragAndDrop)
{
    if (!m_mediaLoader)
        return;
    qCDebug(lcTiming) << "opening" << source;
    const QVariant fileSource = source.isEmpty() ? QVariant(QString()) : QVariant(source);
    QMetaObject::invokeMethod(m_mediaLoader, "processFileSource", Qt::DirectConnection,
                              Q_ARG(QVariant, fileSource), Q_ARG(QVariant, false),
                              Q_ARG(QVariant, error), Q_ARG(QVariant, dragAndDrop));
}

QStringList VxGlobalObject::getPlayListNames() const
{
    QStringList names;
    for (const QUrl &url : m_playlist)
        names.append(QFileInfo(url.path()).completeBaseName());
    return names;
}

void VxGlobalObject::clearPlayList()
{
    m_nextImageTimer.stop();
    m_playlist.clear();
    m_playListIndex = -1;
    Q_EMIT playListIndexChanged();
}

void VxGlobalObject::setPlayListIndex(int index, bool dragAndDrop)
{
    if (index == m_playListIndex)
        return;
    m_nextImageTimer.stop();
    m_playListIndex = index;
    if (index >= 0 && index < m_playlist.size())
        processFileSource(m_playlist.at(index), QString(), dragAndDrop);
    Q_EMIT playListIndexChanged();
}

void VxGlobalObject::playListSetPrevious()
{
    const int previous = m_playListIndex - 1;
    setPlayListIndex(previous < 0 ? m_playlist.size() - 1 : previous);
}

void VxGlobalObject::playListSetNext(bool forceNext)
{
    if (m_playlist.isEmpty())
        return;
    const int next = m_playListIndex + 1;
    if (forceNext) {
        setPlayListIndex(next % m_playlist.size());
        return;
    }
    switch (m_loopMode) {
    case NoLoop:
        if (next < m_playlist.size())
            setPlayListIndex(next);
        else
            Q_EMIT endOfPlaylistReached();
        break;
    case LoopAll:
        setPlayListIndex(next % m_playlist.size());
        break;
    case LoopFile:
        // It would begin the same picture anew while that is still being loaded.
        m_nextImageTimer.stop();
        processFileSource(m_playlist.value(m_playListIndex), QString(), false);
        break;
    default:
        qCWarning(lcMedia) << "Wrong loop mode value" << m_loopMode;
        break;
    }
}

QString VxGlobalObject::getThumb(const QUrl &media) const
{
    QString given = m_thumbMap.value(media).toString();
    if (!given.isEmpty())
        return given;
    QString path = media.toLocalFile();
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot >= 0)
        path.truncate(dot);
    path += QLatin1String(".png");
    return QFileInfo::exists(path) ? QStringLiteral("file:/") + path : QString();
}

bool VxGlobalObject::isImageFile(const QUrl &url) const
{
    return MediaFormats::isImage(url);
}

int VxGlobalObject::isVideoFile(const QUrl &url) const
{
    return MediaFormats::videoKind(url, isVlcCustom());
}

bool VxGlobalObject::isFile(const QUrl &url) const
{
    return url.scheme() == QLatin1String("file");
}

QUrl VxGlobalObject::checkFilePath(QUrl url) const
{
    if (url.scheme() == QLatin1String("qrc"))
        url.setScheme(QStringLiteral("file"));
    return url;
}

QStringList VxGlobalObject::getSupportedImageFormats() const
{
    return MediaFormats::imageSuffixes();
}

QStringList VxGlobalObject::getSupportedVideoFormats() const
{
    return MediaFormats::videoSuffixes(isVlcCustom());
}

void VxGlobalObject::startTimerNextImage()
{
    if (!m_noTimeout)
        m_nextImageTimer.start(m_imageDisplayTime);
}

void VxGlobalObject::pauseTimerNextImage()
{
    if (!m_nextImageTimer.isActive())
        return;
    m_imageRemaining = m_nextImageTimer.remainingTime();
    m_nextImageTimer.stop();
}

void VxGlobalObject::resumeTimerNextImage()
{
    // A picture that is resumed stays for a moment, however little time it had left.
    m_imageRemaining = std::max(m_imageRemaining, kMinResumedImageMs);
    m_nextImageTimer.start(m_imageRemaining);
}

void VxGlobalObject::imageTimeoutSetNext()
{
    if (!m_playlist.isEmpty()) {
        playListSetNext(false);
        return;
    }
    if (m_mediaLoader)
        QMetaObject::invokeMethod(m_mediaLoader, m_loopMode < LoopAll ? "stop" : "play");
}

void VxGlobalObject::inspectImage(const QUrl &url)
{
    // The picture may sit on a slow disk or a dead network share, so the look at it must not hold
    // the interface.
    QThreadPool::globalInstance()->start([self = QPointer<VxGlobalObject>(this), url] {
        const auto report = [&](bool usable) {
            QMetaObject::invokeMethod(
                qApp,
                [self, url, usable] {
                    if (self)
                        Q_EMIT self->imageInspected(url, usable);
                },
                Qt::QueuedConnection);
        };
        const QString path = url.toLocalFile();
        const bool readable = ImageInspector::canBeDecoded(path);
        qCDebug(lcTiming) << "looked at" << url;
        report(readable);
        // The decoder is already at work; only a damaged file is reported a second time.
        if (readable && ImageInspector::isTruncatedJpeg(path))
            report(false);
    });
}

QUrl VxGlobalObject::pictureSource(const QUrl &url) const
{
    return m_prefetch ? m_prefetch->source(url) : url;
}

void VxGlobalObject::hackQmlMediaPlayer(QObject *player)
{
    // Qt's media object tells its position once a second by default: too coarse for a seek bar.
    constexpr int kNotifyIntervalMs = 40;
    if (!player)
        return;
    if (QObject *mediaObject = player->property("mediaObject").value<QObject *>())
        mediaObject->setProperty("notifyInterval", kNotifyIntervalMs);
}

QString VxGlobalObject::getVlcCmdInfos(bool custom, const QString &what) const
{
    const VxVlcOptions *options = VxVlcOptions::instance();
    if (!options)
        return {};
    const bool media = what == kMediaOptions;
    if (custom)
        return media ? options->customMediaOptions : options->customInstanceArguments;
    VxVlcOptions defaults = *options;
    defaults.custom = false;
    return (media ? defaults.mediaOptions() : defaults.instanceArguments()).join(QLatin1Char(','));
}

void VxGlobalObject::setVlcCustomCmd(const QString &what, const QString &cmd)
{
    VxVlcOptions *options = VxVlcOptions::instance();
    if (!options)
        return;
    if (what == kMediaOptions)
        options->customMediaOptions = cmd;
    else
        options->customInstanceArguments = cmd;
}

bool VxGlobalObject::isVlcCustom() const
{
    const VxVlcOptions *options = VxVlcOptions::instance();
    return options && options->custom;
}
