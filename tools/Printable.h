// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Text of a file on its way to a terminal.

#include <QString>

#include <string>

/// The text with its control characters escaped, which would steer the terminal.
QString printable(const QString &text);

/// The same for a text in UTF-8 that may be large; tabs and the ends of lines stay. Bytes that are
/// no UTF-8 are escaped too.
std::string printableLines(const std::string &text);
