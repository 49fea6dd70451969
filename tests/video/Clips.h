// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Small clips, made by ffmpeg when a test asks for them.

#include <QImage>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>

class Clips
{
public:
    Clips() { Q_ASSERT(m_folder.isValid()); }

    QString path(const QString &name) const { return m_folder.filePath(name); }

    QUrl url(const QString &name) const { return QUrl::fromLocalFile(path(name)); }

    /// Runs ffmpeg with the arguments, which are split at blanks, and the clip's path behind them.
    /// "%1" stands for the folder of the clips. Once for each name.
    bool make(const QString &name, const QString &arguments)
    {
        if (m_made.contains(name))
            return true;
        QStringList list{QStringLiteral("-hide_banner"), QStringLiteral("-loglevel"),
                         QStringLiteral("error"),        QStringLiteral("-y"),
                         QStringLiteral("-threads"),     QStringLiteral("2")};
        list += arguments.split(u' ', Qt::SkipEmptyParts)
                    .replaceInStrings(QStringLiteral("%1"), m_folder.path());
        list << path(name);
        QProcess ffmpeg;
        ffmpeg.setProcessChannelMode(QProcess::ForwardedChannels);
        ffmpeg.start(QStringLiteral("ffmpeg"), list);
        const bool made = ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0;
        if (made)
            m_made.insert(name, true);
        return made;
    }

    /// A still picture of four quadrants, for clips whose every frame is known.
    QString quadrants(const QSize &size)
    {
        const QString name =
            path(QStringLiteral("quadrants-%1x%2.png").arg(size.width()).arg(size.height()));
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                image.setPixel(x, y,
                               kQuadrants[(y * 2 >= size.height()) * 2 + (x * 2 >= size.width())]);
        }
        image.save(name);
        return name;
    }

    bool write(const QString &name, const QByteArray &content)
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static constexpr QRgb kQuadrants[4] = {qRgb(200, 40, 40), qRgb(40, 180, 60), qRgb(50, 60, 190),
                                           qRgb(210, 200, 190)};

private:
    QTemporaryDir m_folder;
    QMap<QString, bool> m_made;
};
