// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a path that the user names holds: a medium, a folder of media or a playlist file.

#include "app/VsplPlaylist.h"

namespace MediaSurvey {

/// From this many files on a folder is not opened.
constexpr int kMaxDirectoryEntries = 1000;

/// Media, at least one, or the message that tells the user why there are none.
struct Findings
{
    QList<QUrl> media;
    QString error;
    QList<VsplPlaylist::Entry> entries; // of a playlist file, one for each medium
};

/// Looks at the file or folder \a url. On any thread; for as long as the disk takes.
Findings survey(const QUrl &url);

} // namespace MediaSurvey
