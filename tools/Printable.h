// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Text of a file on its way to a terminal.

#include <QString>

/// The text with its control characters escaped, which would steer the terminal; those in `kept`
/// stay.
QString printable(const QString &text, const QString &kept = QString());
