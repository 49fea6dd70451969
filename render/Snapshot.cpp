// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Snapshot.h"

#include "render/VxShaderCodeBuilder.h"
#include "settings/VxSettingsKeys.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <cmath>
#include <mutex>

namespace Snapshot {

namespace {

Q_LOGGING_CATEGORY(lcSnapshot, "tavro.snapshot")

QSize scaled(const QSize &size, double factor)
{
    return {qRound(size.width() * factor), qRound(size.height() * factor)};
}

/// Shrinks to the limit, one dimension after the other, and keeps the shape.
QSize limited(QSize size, const QSize &limit)
{
    if (limit.width() < size.width())
        size = scaled(size, double(limit.width()) / size.width());
    if (limit.height() < size.height())
        size = scaled(size, double(limit.height()) / size.height());
    return size;
}

/// Unlike a single call, this one meets the error that ends it early.
bool writeAll(QIODevice &device, const QByteArray &bytes)
{
    qint64 done = 0;
    for (qint64 step = 1; step > 0 && done < bytes.size(); done += step)
        step = device.write(bytes.constData() + done, bytes.size() - done);
    return done == bytes.size();
}

} // namespace

QSize renderSize(const Request &request)
{
    const QSize texture = request.texture;
    if (texture.width() < 0 || texture.height() < 0) {
        qCWarning(lcSnapshot) << "Invalid size" << texture;
        return texture;
    }
    const double w = request.view.width();
    const double h = request.view.height();
    const double fov = double(request.fov);
    QSize size = request.view;
    // The field of view belongs to the shorter side: its share of the sphere is the source's.
    if (request.projectionSource == VxShaderCodeBuilder::EQUIRECTANGULAR
        || request.projectionSource == VxShaderCodeBuilder::CUBEMAP) {
        const QSize base = w < h
            ? QSize(int(texture.width() * fov / 360), int(texture.height() * fov * h / w / 180))
            : QSize(int(texture.width() * w * fov / h / 360), int(texture.height() * fov / 180));
        switch (request.projection) {
        case VxShaderCodeBuilder::RECTILINEAR:
        case VxShaderCodeBuilder::FISHEYE:
            size = base;
            break;
        case VxShaderCodeBuilder::LITTLE_PLANET:
            size = scaled(base, 3);
            break;
        default:
            // 1 at 80 degrees, and more the more the edges are stretched.
            size = scaled(base, fov * 0.007142857142857143 + 0.42857142857142855);
            break;
        }
    }
    // Side by side, the eyes must fit into one texture.
    return limited(size, {request.limit.width() / request.eyes, request.limit.height()});
}

QString folder(const QVariant &setting)
{
    const QString text = setting.toString();
    if (text.isEmpty() || text == VxSettingsKeys::kUndefinedFolder)
        return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    const QUrl url(text);
    return url.isLocalFile() ? url.toLocalFile() : text;
}

QString fileName(bool render, const QDateTime &time)
{
    QString name = QStringLiteral("VXSNP_%1_%2_%3")
                       .arg(render ? QStringLiteral("render") : QStringLiteral("snap"),
                            time.toString(Qt::ISODate).replace(QLatin1Char('T'), QLatin1Char('_')))
                       .arg(time.time().msec());
    return name.replace(QLatin1Char(':'), QLatin1Char('_')) + QLatin1String(".png");
}

Saved save(const QImage &image, bool render, const QString &folder)
{
    if (image.isNull())
        return {{}, QCoreApplication::translate("Snapshot", "the picture is too large")};
    // Not into the file: the encoder would hide why that takes no more.
    QBuffer png;
    if (!png.open(QIODevice::WriteOnly) || !image.save(&png, "PNG"))
        return {{}, QCoreApplication::translate("Snapshot", "there is not enough memory")};
    QDir().mkpath(folder); // the file tells what is wrong with it
    // Two snapshots of one millisecond would have one name; the later takes the next that is free.
    static std::mutex oneAtATime;
    const std::lock_guard lock(oneAtATime);
    QDateTime time = QDateTime::currentDateTime();
    while (QFile::exists(folder + QLatin1Char('/') + fileName(render, time)))
        time = time.addMSecs(1);
    QSaveFile file(folder + QLatin1Char('/') + fileName(render, time));
    const bool written =
        file.open(QIODevice::WriteOnly) && writeAll(file, png.data()) && file.flush();
    const QString error = file.errorString(); // which the end of writing forgets
    if (written && file.commit())
        return {file.fileName(), {}};
    return {{}, written ? file.errorString() : error};
}

} // namespace Snapshot
