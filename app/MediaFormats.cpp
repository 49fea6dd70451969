// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MediaFormats.h"

#include <QFileInfo>
#include <QImageReader>

namespace MediaFormats {

namespace {

const QString kRawSuffix = QStringLiteral("yuv");

QString suffixOf(const QUrl &url)
{
    return QFileInfo(url.path()).suffix().toLower();
}

} // namespace

QStringList imageSuffixes()
{
    // Asking loads every image plug-in, and the answer does not change while the program runs.
    static const QStringList suffixes = [] {
        QStringList list;
        const auto formats = QImageReader::supportedImageFormats();
        for (const QByteArray &format : formats)
            list.append(QString::fromLatin1(format));
        return list;
    }();
    return suffixes;
}

QStringList videoSuffixes(bool customArguments)
{
    QStringList list{QStringLiteral("3gp"),  QStringLiteral("aif"),   QStringLiteral("asf"),
                     QStringLiteral("avi"),  QStringLiteral("divx"),  QStringLiteral("dvx"),
                     QStringLiteral("flv"),  QStringLiteral("h264"),  QStringLiteral("h265"),
                     QStringLiteral("m3u8"), QStringLiteral("m4v"),   QStringLiteral("mkv"),
                     QStringLiteral("mov"),  QStringLiteral("movie"), QStringLiteral("mp4"),
                     QStringLiteral("mp4v"), QStringLiteral("mpe"),   QStringLiteral("mpeg"),
                     QStringLiteral("mpg"),  QStringLiteral("ogg"),   QStringLiteral("swf"),
                     QStringLiteral("ts"),   QStringLiteral("vivo"),  QStringLiteral("webm"),
                     QStringLiteral("wmv")};
    if (customArguments)
        list.append(kRawSuffix);
    return list;
}

bool isUrl(const QString &argument)
{
    // Empty where the text before the colon is no scheme.
    const QUrl url(argument);
    const QString scheme = url.isValid() ? url.scheme() : QString();
    for (const char *known : {"http", "https", "rtsp", "udp", "file"}) {
        if (scheme == QLatin1String(known))
            return true;
    }
    // One letter is a drive of another system.
    return scheme.size() > 1 && argument.midRef(scheme.size()).startsWith(QLatin1String("://"));
}

bool isImage(const QUrl &url)
{
    // No image plug-in claims a video's suffix, and asking would have a film wait for all of them.
    return videoKind(url, true) == NotVideo && imageSuffixes().contains(suffixOf(url));
}

VideoKind videoKind(const QUrl &url, bool customArguments)
{
    const QString suffix = suffixOf(url);
    if (videoSuffixes(customArguments).contains(suffix))
        return Video;
    return suffix == kRawSuffix ? RawVideo : NotVideo;
}

} // namespace MediaFormats
