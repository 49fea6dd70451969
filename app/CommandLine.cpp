// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLine.h"

#include "app/MediaFormats.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

namespace CommandLine {

namespace {

QString absoluteFile(const QString &file, const QString &startDirectory)
{
    if (MediaFormats::isUrl(file))
        return file;
    return QDir::cleanPath(QDir(startDirectory).absoluteFilePath(file));
}

} // namespace

QVariantMap parse(const QStringList &arguments, const QString &startDirectory)
{
    if (arguments.size() <= 1)
        return {};

    const QCommandLineOption udp(
        {QStringLiteral("u"), QStringLiteral("udp")},
        QCoreApplication::translate("main", "Udp mode, can be master or slave."),
        QCoreApplication::translate("main", "udp"), QString());
    const QCommandLineOption adobePlugin({QStringLiteral("a"), QStringLiteral("adobeplugin")},
                                         QStringLiteral("command line used by Adobe plugin."));
    const QCommandLineOption customVlc({QStringLiteral("c"), QStringLiteral("customvlc")},
                                       QStringLiteral("activate custom mode for vlc."));
    const QCommandLineOption touchTable({QStringLiteral("t"), QStringLiteral("touchtable")},
                                        QStringLiteral("special case for touch table."));

    QCommandLineParser parser;
    parser.addOptions({udp, adobePlugin, customVlc, touchTable});
    parser.addPositionalArgument(
        QStringLiteral("files"),
        QCoreApplication::translate("main", "Path of the file(s) to read."));
    parser.process(arguments);

    QStringList files;
    const QStringList positional = parser.positionalArguments();
    for (const QString &file : positional) {
        // An empty argument, as a script with an unset variable gives it, is no folder to open.
        if (!file.isEmpty())
            files.append(absoluteFile(file, startDirectory));
    }

    return {{QStringLiteral("udp"), parser.value(udp)},
            {QStringLiteral("adobeplugin"), parser.isSet(adobePlugin)},
            {QStringLiteral("customvlc"), parser.isSet(customVlc)},
            {QStringLiteral("touchtable"), parser.isSet(touchTable)},
            {QStringLiteral("files"), files}};
}

} // namespace CommandLine
