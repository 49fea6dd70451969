// SPDX-License-Identifier: GPL-3.0-or-later
// The media half of the controller: from a path to a playing medium, the playlist, the slide show.
#include "app/ImageInspector.h"
#include "app/MediaFormats.h"
#include "app/PicturePrefetch.h"
#include "app/VideoMetadata.h"
#include "app/VxContext.h"
#include "app/VxGlobalObject.h"
#include "settings/VxSettings.h"
#include "settings/VxVlcOptions.h"

#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <new>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcMedia, "tavro.media", QtWarningMsg)
Q_LOGGING_CATEGORY(lcTiming, "tavro.timing", QtWarningMsg)

constexpr int kMinResumedImageMs = 3000;

// Names the options of a medium; anything else means the arguments of the instance.
const QLatin1String kMediaOptions("media");

/// What a medium says of itself; only films do.
QVariantMap metadataOf(const QUrl &medium)
{
    if (!medium.isLocalFile() || MediaFormats::videoKind(medium, true) == MediaFormats::NotVideo)
        return {};
    try {
        return VideoMetadata::read(medium.toLocalFile());
    } catch (const std::bad_alloc &) {
        return {};
    }
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
    // However long the look takes, what is shown now is not followed by anything else.
    m_nextImageTimer.stop();
    stopPassingOver();
    m_refused.clear(); // the user may have mended it
    const QUrl only = urls.first();
    m_asked = only;
    m_onItsWay = only;
    if (urls.size() > 1 || !only.isLocalFile()) {
        m_mediumInquiry.forget();
        open({urls, {}, {}}, dragAndDrop);
        return;
    }
    m_mediumInquiry.ask([this, only, dragAndDrop]() -> FileInquiry::Answer {
        const MediaSurvey::Findings findings = MediaSurvey::survey(only);
        const QUrl first = findings.media.value(0);
        return [this, findings, first, metadata = metadataOf(first), dragAndDrop] {
            m_readAhead = {first, metadata};
            open(findings, dragAndDrop);
        };
    });
}

void VxGlobalObject::open(const MediaSurvey::Findings &findings, bool dragAndDrop)
{
    // Entries of earlier playlists stay: their media may be opened again one by one.
    for (const VsplPlaylist::Entry &entry : findings.entries) {
        m_logoMap.insert(entry.media, entry.logo);
        m_thumbMap.insert(entry.media, entry.thumb);
        m_stereoMap.insert(entry.media, entry.stereo);
    }
    clearPlayList();
    m_progress.begin(findings.media.value(0) != m_asked);
    if (!findings.error.isEmpty()) {
        processFileSource(QUrl(), findings.error, dragAndDrop);
    } else if (findings.media.size() < 2) {
        processFileSource(findings.media.first(), QString(), dragAndDrop);
    } else {
        m_playlist = findings.media;
        setPlayListIndex(0, dragAndDrop);
        Q_EMIT playListChanged();
    }
}

// The head of a film is read before its player hears of it, and not by this thread.
void VxGlobalObject::processFileSource(const QUrl &source, const QString &error, bool dragAndDrop)
{
    m_onItsWay = source;
    if (source != m_refused)
        m_refused.clear();
    // Only now is the show on its way to another entry for all who follow it.
    const bool passedOver = std::exchange(m_passesOver, false);
    if (source.isEmpty() || m_readAhead.medium == source || !source.isLocalFile()
        || isVideoFile(source) == MediaFormats::NotVideo) {
        m_mediumInquiry.forget();
        giveToLoader(source, error, dragAndDrop);
        m_readAhead = {};
        if (passedOver)
            Q_EMIT openingChanged();
        return;
    }
    m_mediumInquiry.ask([this, source, error, dragAndDrop]() -> FileInquiry::Answer {
        return [this, source, metadata = metadataOf(source), error, dragAndDrop] {
            m_readAhead = {source, metadata};
            processFileSource(source, error, dragAndDrop);
        };
    });
}

void VxGlobalObject::giveToLoader(const QUrl &source, const QString &error, bool dragAndDrop)
{
    if (!m_mediaLoader)
        return;
    qCDebug(lcTiming) << "opening" << source;
    const QVariant fileSource = source.isEmpty() ? QVariant(QString()) : QVariant(source);
    m_isGiving = true;
    QMetaObject::invokeMethod(m_mediaLoader, "processFileSource", Qt::DirectConnection,
                              Q_ARG(QVariant, fileSource), Q_ARG(QVariant, false),
                              Q_ARG(QVariant, error), Q_ARG(QVariant, dragAndDrop));
    m_isGiving = false;
}

bool VxGlobalObject::admits(const QUrl &medium, bool clearPlaylist, bool dragAndDrop)
{
    if (m_isGiving)
        return true;
    // A master repeats itself fifty times a second.
    if (medium == m_onItsWay || medium == m_refused)
        return false;
    if (clearPlaylist)
        clearPlayList();
    m_asked = medium;
    processFileSource(medium, QString(), dragAndDrop);
    return false;
}

QString VxGlobalObject::refuse(const QUrl &medium, const QString &message)
{
    m_onItsWay.clear();
    m_refused = medium;
    if (m_playListIndex < 0 || m_playListIndex >= m_playlist.size())
        return message;
    const bool isLast = m_progress.isAutomatic() && m_loopMode == NoLoop
        && m_playListIndex + m_progress.direction() >= m_playlist.size();
    switch (m_progress.fail(m_playlist.size(), isLast)) {
    case ShowProgress::Verdict::Tell:
        return message;
    case ShowProgress::Verdict::GiveUp: {
        const QString text = tr("None of the %1 files can be shown.").arg(m_playlist.size());
        clearPlayList();
        return text;
    }
    case ShowProgress::Verdict::PassOver:
        break;
    }
    m_passesOver = true;
    Q_EMIT openingChanged();
    Q_EMIT passedOver(medium.fileName());
    // Not from within the refusal: a folder may hold hundreds of such files in a row.
    QMetaObject::invokeMethod(this, &VxGlobalObject::tryNextEntry, Qt::QueuedConnection);
    return {};
}

void VxGlobalObject::explainFailure(const QUrl &medium, const QString &message)
{
    m_advisor.explain(medium.isEmpty() ? m_asked : medium, message);
}

void VxGlobalObject::noteShown()
{
    // The next one may be on its way already.
    if (m_mediaLoader && m_mediaLoader->property("mediaSource").toUrl() == m_onItsWay)
        m_onItsWay.clear();
    m_progress.shown();
}

void VxGlobalObject::stopPassingOver()
{
    if (std::exchange(m_passesOver, false))
        Q_EMIT openingChanged();
}

void VxGlobalObject::tryNextEntry()
{
    // Something else was chosen meanwhile.
    if (!m_passesOver)
        return;
    const int next = m_playListIndex + m_progress.direction();
    if (m_progress.isAutomatic() && m_loopMode == NoLoop && next >= m_playlist.size()) {
        Q_EMIT endOfPlaylistReached();
        stopPassingOver();
    } else {
        setPlayListIndex((next + m_playlist.size()) % m_playlist.size());
    }
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
    m_mediumInquiry.forget(); // who stops the player wants no other medium
    stopPassingOver();
    m_onItsWay.clear();
    m_progress.begin(false);
    m_nextImageTimer.stop();
    m_playlist.clear();
    m_playListIndex = -1;
    Q_EMIT playListIndexChanged();
}

void VxGlobalObject::choosePlayListIndex(int index)
{
    m_progress.step(1, false);
    setPlayListIndex(index);
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
    m_progress.step(-1, false);
    setPlayListIndex(previous < 0 ? m_playlist.size() - 1 : previous);
}

void VxGlobalObject::playListSetNext(bool forceNext)
{
    if (m_playlist.isEmpty())
        return;
    const int next = m_playListIndex + 1;
    if (forceNext) {
        m_progress.step(1, false);
        setPlayListIndex(next % m_playlist.size());
        return;
    }
    // The user has chosen what comes next.
    if (isOpening())
        return;
    noteShown(); // to its end
    m_progress.step(1, true);
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
    if (m_noTimeout)
        return;
    // A picture that is resumed stays for a moment, however little time it had left.
    m_imageRemaining = std::max(m_imageRemaining, kMinResumedImageMs);
    m_nextImageTimer.start(m_imageRemaining);
}

void VxGlobalObject::imageTimeoutSetNext()
{
    // The user has chosen what comes next.
    if (isOpening())
        return;
    if (!m_playlist.isEmpty()) {
        playListSetNext(false);
        return;
    }
    if (m_mediaLoader)
        QMetaObject::invokeMethod(m_mediaLoader, m_loopMode < LoopAll ? "stop" : "play");
}

void VxGlobalObject::inspectImage(const QUrl &url)
{
    const QString path = url.toLocalFile();
    m_pictureInquiry.ask([this, url, path]() -> FileInquiry::Answer {
        const bool readable = ImageInspector::canBeDecoded(path);
        qCDebug(lcTiming) << "looked at" << url;
        return [this, url, path, readable] {
            if (readable)
                inspectEnd(url, path);
            Q_EMIT imageInspected(url, readable);
        };
    });
}

// The decoder is already at work; only a file that ends too early is reported a second time.
void VxGlobalObject::inspectEnd(const QUrl &url, const QString &path)
{
    m_pictureInquiry.ask([this, url, path]() -> FileInquiry::Answer {
        const ImageInspector::JpegEnd end = ImageInspector::endOfJpeg(path);
        return [this, url, end] {
            if (end == ImageInspector::JpegEnd::Before)
                Q_EMIT imageInspected(url, false);
            else if (end == ImageInspector::JpegEnd::Within)
                Q_EMIT imageCut(url);
        };
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
    options->save(m_context->settings()->store());
}

bool VxGlobalObject::isVlcCustom() const
{
    const VxVlcOptions *options = VxVlcOptions::instance();
    return options && options->custom;
}
