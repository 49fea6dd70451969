// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MediumAdvice.h"

#include "app/MediaFormats.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QUrl>

namespace MediumAdvice {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(MediumAdvice)
};

constexpr qint64 kHeadBytes = 16384; // what the rules of file types look at

bool canBeNamed(const QString &suffix)
{
    const QUrl name = QUrl::fromLocalFile(QStringLiteral("/a.") + suffix);
    return MediaFormats::isImage(name)
        || MediaFormats::videoKind(name, false) != MediaFormats::NotVideo;
}

/// What the bytes at the beginning of a file tell against what its name promises.
QString judgeContent(const QUrl &medium, const QByteArray &head)
{
    const bool isPicture = MediaFormats::isImage(medium);
    const bool isFilm = MediaFormats::videoKind(medium, true) != MediaFormats::NotVideo;
    const QMimeType type = QMimeDatabase().mimeTypeForData(head);
    const bool holdsPicture = type.name().startsWith(QLatin1String("image/"));
    const bool holdsFilm = type.name().startsWith(QLatin1String("video/"))
        || type.name().startsWith(QLatin1String("audio/"))
        || type.name() == QLatin1String("application/ogg");
    if ((isPicture && holdsPicture) || (isFilm && holdsFilm))
        return Text::tr("The file is damaged or incomplete: copy or download it again.");
    if ((holdsPicture || holdsFilm) && canBeNamed(type.preferredSuffix()))
        return Text::tr("It holds what is called \"%1\": give it a name that ends with .%2.")
            .arg(type.comment(), type.preferredSuffix());
    if (!isPicture && !isFilm)
        return Text::tr("Files are told by their suffixes, such as .jpg, .png, .mp4 or .mkv.");
    if (type.isDefault())
        return isFilm
            ? Text::tr("Nothing in it is known as a film: it is damaged, or of another format.")
            : Text::tr("Nothing in it is known as a picture: it is damaged, or of another format.");
    return isFilm ? Text::tr("It holds no film, but what is called \"%1\".").arg(type.comment())
                  : Text::tr("It holds no picture, but what is called \"%1\".").arg(type.comment());
}

QString judgeFile(const QUrl &medium)
{
    const QFileInfo info(medium.toLocalFile());
    if (!info.exists())
        return Text::tr(
            "There is no such file: it was moved or renamed, or its disk is not there.");
    if (info.isDir())
        return {};
    if (!info.isFile())
        return Text::tr("This is a pipe or a device, not a file.");
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly))
        return Text::tr("It may not be read (%1): its owner can change that.")
            .arg(file.errorString());
    if (info.size() == 0)
        return Text::tr("The file is empty: copy or download it again.");
    if (info.suffix() == QLatin1String("vspl"))
        return Text::tr("A playlist is a list of objects, each with the path of its \"media\".");
    const QByteArray head = file.read(kHeadBytes);
    if (head.isEmpty())
        return Text::tr("Its disk cannot be read (%1).").arg(file.errorString());
    return judgeContent(medium, head);
}

} // namespace

QString of(const QUrl &medium)
{
    if (!medium.isLocalFile())
        return Text::tr("%1\nCheck the address, and whether its server can be reached.")
            .arg(medium.toDisplayString());
    const QString path = QDir::toNativeSeparators(medium.toLocalFile());
    const QString judgement = judgeFile(medium);
    return judgement.isEmpty() ? path : path + QLatin1Char('\n') + judgement;
}

} // namespace MediumAdvice
