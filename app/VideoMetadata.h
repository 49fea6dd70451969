// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What an MP4 or MOV file says of itself, under the names by which the interface knows it.

#include <QString>
#include <QVariantMap>

namespace VideoMetadata {

inline const QString kTextureSize = QStringLiteral("Texture size");
inline const QString kProjection = QStringLiteral("Projection");
inline const QString kStereoscopy = QStringLiteral("Stereoscopy");

/// Values of kProjection.
enum Projection {
    Flat = 0,
    Equirectangular = 1,
    Cubemap = 256
};

/// Values of kStereoscopy.
enum Stereoscopy {
    Mono = 0,
    SideBySide = 1,
    OverUnder = 2
};

/// Reads the file at \a path. What it does not say has a value that plays it as most are: mono,
/// upright, a full sphere. Empty for a file that is no such container or has no video. On any
/// thread; for as long as the disk takes.
QVariantMap read(const QString &path);

} // namespace VideoMetadata
