// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Which files the program takes for pictures and which for videos. Only the name decides: a file
// is opened by its player, and that is where a wrong name shows.

#include <QStringList>
#include <QUrl>

namespace MediaFormats {

/// What the player makes of a video file's name.
enum VideoKind {
    NotVideo = 0,
    Video = 1,
    /// A raw file that says nothing of itself: readable only with custom arguments.
    RawVideo = 2,
};

/// Suffixes, in lower case, of the pictures that the image readers of this machine read.
QStringList imageSuffixes();

/// Suffixes, in lower case, of the videos. "yuv" is one only when \a customArguments is set.
QStringList videoSuffixes(bool customArguments);

/// True for an argument that the user means as a URL: it begins with a scheme and "://", or with
/// one of the schemes "http", "https", "rtsp", "udp" and "file". Anything else is a path, also
/// where its name has a colon.
bool isUrl(const QString &argument);

bool isImage(const QUrl &url);
VideoKind videoKind(const QUrl &url, bool customArguments);

} // namespace MediaFormats
