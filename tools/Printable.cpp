// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Printable.h"

QString printable(const QString &text, const QString &kept)
{
    QString escaped;
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control && !kept.contains(character))
            escaped += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            escaped += character;
    }
    return escaped;
}
