// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Decodes the common photograph straight into the pixels that a texture takes: faster than Qt's
// reader, which converts a second time, and usable before the application object exists, which
// Qt's readers are not, because they are plug-ins.

#include <QByteArray>
#include <QImage>

namespace JpegDecoder {

/// The picture of the JPEG file \a path, which is in the file system's encoding, in
/// QImage::Format_RGB32, as it lies in the file: an orientation that the file asks for is not
/// applied. Null for whatever is better left to Qt's reader: another format, colours other than
/// YCbCr and grey, a side above \a maxSide pixels, any damage. Works on any thread.
QImage decode(const QByteArray &path, int maxSide);

} // namespace JpegDecoder
