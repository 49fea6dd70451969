// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program's command line.

#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace CommandLine {

/// Parses \a arguments, whose first is the program, into the keys "udp" (text), "adobeplugin",
/// "customvlc", "touchtable" (bool) and "files" (list of absolute paths and URLs). With no argument
/// beside the program the map is empty. An unknown option, or one that lacks its value, is reported
/// on the error stream and ends the process with code 1.
///
/// \a startDirectory is where the user started the program: relative paths count from there.
QVariantMap parse(const QStringList &arguments, const QString &startDirectory);

/// The first of the "files" of parse(), or an empty text where parse() would end the process, or
/// would after the application object has taken its own options. Reports nothing, ends nothing,
/// and needs no application object.
QString firstFile(const QStringList &arguments, const QString &startDirectory);

} // namespace CommandLine
