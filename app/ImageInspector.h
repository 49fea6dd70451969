// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A look at a picture file before and while a decoder gets it. The decoders of the image readers
// block on pipes, take as much memory as a header asks for, and fill up what a truncated JPEG lacks
// with grey without a word, be it all; none of these may happen to a user unseen.

#include <QString>

namespace ImageInspector {

/// True when \a path is a regular, readable file in a format that an image reader knows and whose
/// decoded size the memory of this machine can hold. Reads the header only.
bool canBeDecoded(const QString &path);

/// Where a file ends.
enum class JpegEnd {
    Behind, ///< behind its picture
    Within, ///< within it: what is there can be shown
    Before, ///< before its first pixel
};

/// Where the JPEG file \a path ends. Reads up to the whole file, in blocks. Behind its picture for
/// every other format: their decoders report a missing end themselves.
JpegEnd endOfJpeg(const QString &path);

} // namespace ImageInspector
