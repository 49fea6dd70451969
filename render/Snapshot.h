// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Sizes, names and files of snapshots. Nothing here touches OpenGL.

#include <QDateTime>
#include <QImage>
#include <QSize>
#include <QString>
#include <QVariant>

namespace Snapshot {

/// What a picture in the source's resolution depends on.
struct Request
{
    QSize view; // one eye's viewport in device pixels
    QSize texture; // the source in texels
    QSize limit; // the largest texture of the GPU
    float fov = 0; // degrees
    int projectionSource = 0; // VxShaderCodeBuilder::InputProjection
    int projection = 0; // VxShaderCodeBuilder::ShaderProjection
    int eyes = 1; // side by side in one texture
};

/// The size at which one eye's picture shows the source about texel by texel, within the GPU's
/// limit. A negative source size is returned as it is, with a warning.
QSize renderSize(const Request &request);

/// The folder that the setting means: a URL or a path, or the user's pictures while it is unset.
QString folder(const QVariant &setting);

/// The name of a snapshot taken at \a time; \a render tells one in the source's resolution.
QString fileName(bool render, const QDateTime &time);

/// What became of a snapshot: its path, or the reason why there is none.
struct Saved
{
    QString path;
    QString error;
};

/// Writes \a image as PNG into \a folder under a name that is not taken, where it appears only when
/// it is whole. Slow: for a pool thread; one snapshot at a time.
Saved save(const QImage &image, bool render, const QString &folder);

} // namespace Snapshot
