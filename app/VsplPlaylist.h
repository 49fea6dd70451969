// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The playlist file `.vspl`: a UTF-8 JSON array of objects whose members "media", "logo" and
// "thumb" are paths relative to the file's directory and whose "stereo" is a stereo word.

#include <QList>
#include <QString>
#include <QUrl>

namespace VsplPlaylist {

/// One medium of a playlist. A member that is missing in the file is empty.
struct Entry
{
    QUrl media;
    QUrl logo;
    QUrl thumb;
    QString stereo;
};

/// Either entries, at least one, or the message that tells the user why there are none.
struct Result
{
    QList<Entry> entries;
    QString error;
};

/// Reads the playlist at \a path.
Result read(const QString &path);

} // namespace VsplPlaylist
