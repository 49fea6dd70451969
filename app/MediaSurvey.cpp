// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MediaSurvey.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace MediaSurvey {

namespace {

/// The files of a folder, newest first; reads no further than the limit of a playlist.
QFileInfoList directoryEntries(const QString &path)
{
    QFileInfoList entries;
    QDirIterator iterator(path, QDir::Files | QDir::NoSymLinks);
    while (iterator.hasNext() && entries.size() < kMaxDirectoryEntries) {
        iterator.next();
        entries.append(iterator.fileInfo());
    }
    if (entries.size() < kMaxDirectoryEntries)
        entries = QDir(path).entryInfoList(QDir::Files | QDir::NoSymLinks, QDir::Time);
    return entries;
}

Findings surveyPlaylist(const QString &path)
{
    const VsplPlaylist::Result playlist = VsplPlaylist::read(path);
    Findings findings{{}, playlist.error, playlist.entries};
    for (const VsplPlaylist::Entry &entry : playlist.entries)
        findings.media.append(entry.media);
    return findings;
}

Findings surveyFolder(const QString &path)
{
    Findings findings;
    const QFileInfoList entries = directoryEntries(path);
    if (entries.isEmpty()) {
        findings.error = QStringLiteral("Error : Directory is empty");
    } else if (entries.size() >= kMaxDirectoryEntries) {
        findings.error = QStringLiteral("Error : Cannot load more than %1 files in a directory")
                             .arg(kMaxDirectoryEntries);
    } else {
        for (const QFileInfo &entry : entries)
            findings.media.append(QUrl::fromLocalFile(entry.absoluteFilePath()));
    }
    return findings;
}

/// A path in whose folders no ".." is left. What Qt makes of them is wrong behind a link.
QString withoutClimbs(const QString &path)
{
    if (!path.contains(QLatin1String("/..")))
        return path;
    const QFileInfo info(path);
    const QString folder = QFileInfo(info.path()).canonicalFilePath();
    return folder.isEmpty() ? path : folder + QLatin1Char('/') + info.fileName();
}

} // namespace

Findings survey(const QUrl &url)
{
    const QString path = withoutClimbs(url.toLocalFile());
    const QFileInfo info(path);
    if (info.suffix() == QLatin1String("vspl"))
        return surveyPlaylist(path);
    if (!path.isEmpty() && info.isDir())
        return surveyFolder(info.absoluteFilePath());
    return {{url}, {}, {}};
}

} // namespace MediaSurvey
