// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"

#include "app/MediaFormats.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

namespace CommandLine {

namespace {

/// True if ".." follows a name. Where that is a link's, only the file system knows what is meant.
bool leavesAFolder(const QString &file)
{
    bool named = false;
    const QStringList parts = file.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        if (part == QLatin1String("..") && named)
            return true;
        named = named || (part != QLatin1String(".") && part != QLatin1String(".."));
    }
    return false;
}

QString absoluteFile(const QString &file, const QString &startDirectory)
{
    if (MediaFormats::isUrl(file))
        return file;
    const QString path = QDir(startDirectory).absoluteFilePath(file);
    return leavesAFolder(file) ? path : QDir::cleanPath(path);
}

struct Options
{
    QCommandLineOption udp{{QStringLiteral("u"), QStringLiteral("udp")},
                           QCoreApplication::translate("main", "Udp mode, can be master or slave."),
                           QCoreApplication::translate("main", "udp"),
                           QString()};
    QCommandLineOption adobePlugin{{QStringLiteral("a"), QStringLiteral("adobeplugin")},
                                   QStringLiteral("command line used by Adobe plugin.")};
    QCommandLineOption customVlc{{QStringLiteral("c"), QStringLiteral("customvlc")},
                                 QStringLiteral("activate custom mode for vlc.")};
    QCommandLineOption touchTable{{QStringLiteral("t"), QStringLiteral("touchtable")},
                                  QStringLiteral("special case for touch table.")};

    void addTo(QCommandLineParser &parser) const
    {
        parser.addOptions({udp, adobePlugin, customVlc, touchTable});
        parser.addPositionalArgument(
            QStringLiteral("files"),
            QCoreApplication::translate("main", "Path of the file(s) to read."));
    }
};

QStringList filesOf(const QCommandLineParser &parser, const QString &startDirectory)
{
    QStringList files;
    const QStringList positional = parser.positionalArguments();
    for (const QString &file : positional) {
        // An empty argument, as a script with an unset variable gives it, is no folder to open.
        if (!file.isEmpty())
            files.append(absoluteFile(file, startDirectory));
    }
    return files;
}

} // namespace

QVariantMap parse(const QStringList &arguments, const QString &startDirectory)
{
    if (arguments.size() <= 1)
        return {};
    const Options options;
    QCommandLineParser parser;
    options.addTo(parser);
    parser.process(arguments);
    return {{QStringLiteral("udp"), parser.value(options.udp)},
            {QStringLiteral("adobeplugin"), parser.isSet(options.adobePlugin)},
            {QStringLiteral("customvlc"), parser.isSet(options.customVlc)},
            {QStringLiteral("touchtable"), parser.isSet(options.touchTable)},
            {QStringLiteral("files"), filesOf(parser, startDirectory)}};
}

QString firstFile(const QStringList &arguments, const QString &startDirectory)
{
    QCommandLineParser parser;
    Options().addTo(parser);
    return parser.parse(arguments) ? filesOf(parser, startDirectory).value(0) : QString();
}

} // namespace CommandLine
