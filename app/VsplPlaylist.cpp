// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VsplPlaylist.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace VsplPlaylist {

namespace {

// Far more than a list of media needs, and little enough to parse while the user waits.
constexpr qint64 kMaxBytes = 64 * 1024 * 1024;

// A playlist names its media relative to itself, so that the folder can be moved as a whole.
QUrl absoluteUrl(const QDir &directory, const QString &path)
{
    return QUrl::fromLocalFile(QDir::toNativeSeparators(directory.absoluteFilePath(path)));
}

// What a playlist leaves out is empty, so that a thumbnail beside the medium can stand in for it.
QUrl optionalUrl(const QDir &directory, const QString &path)
{
    return path.isEmpty() ? QUrl() : absoluteUrl(directory, path);
}

} // namespace

Result read(const QString &path)
{
    Result result;
    QFile file(path);
    // A pipe or a device would keep the reader waiting.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        result.error = QStringLiteral("Error : cannot open file .vspl");
        return result;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.read(kMaxBytes));
    if (document.isNull()) {
        result.error = QStringLiteral("Error : cannot parse json");
        return result;
    }
    if (!document.isArray()) {
        result.error = QStringLiteral("Error : json is not an array");
        return result;
    }
    const QJsonArray array = document.array();
    if (array.isEmpty()) {
        result.error = QStringLiteral("Error : json is empty");
        return result;
    }
    const QDir directory = QFileInfo(path).absoluteDir();
    for (const QJsonValue &value : array) {
        const QJsonObject object = value.toObject();
        // An entry without a medium names the directory, which no player opens: the user is told
        // when the entry's turn comes.
        result.entries.append(
            {absoluteUrl(directory, object.value(QLatin1String("media")).toString()),
             optionalUrl(directory, object.value(QLatin1String("logo")).toString()),
             optionalUrl(directory, object.value(QLatin1String("thumb")).toString()),
             object.value(QLatin1String("stereo")).toString()});
    }
    return result;
}

} // namespace VsplPlaylist
