// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Printable.h"

#include <cstdio>
#include <string_view>

namespace {
/// The length of the printable character that a text in UTF-8 begins with; 0 when it begins with a
/// control character or with a byte that begins no character.
size_t printableLength(std::string_view text)
{
    const auto byte = [text](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t first = byte(0);
    if (first < 0x80)
        return (first >= 0x20 && first != 0x7f) || first == '\n' || first == '\t' ? 1 : 0;
    const size_t length = first >= 0xc2 && first < 0xe0 ? 2
        : first >= 0xe0 && first < 0xf0                 ? 3
        : first >= 0xf0 && first < 0xf5                 ? 4
                                                        : 0;
    if (length == 0 || length > text.size())
        return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return 0;
    }
    // The control characters of Latin-1; forms that are longer than need be, surrogates and what
    // lies past the last character.
    const uint8_t second = byte(1);
    const bool refused = (first == 0xc2 && second < 0xa0) || (first == 0xe0 && second < 0xa0)
        || (first == 0xed && second >= 0xa0) || (first == 0xf0 && second < 0x90)
        || (first == 0xf4 && second >= 0x90);
    return refused ? 0 : length;
}
} // namespace

QString printable(const QString &text)
{
    QString escaped;
    for (const QChar character : text) {
        if (character.category() == QChar::Other_Control)
            escaped += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
        else
            escaped += character;
    }
    return escaped;
}

std::string printableLines(const std::string &text)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const size_t length = printableLength(std::string_view(text).substr(at));
        if (length != 0) {
            escaped.append(text, at, length);
            at += length;
            continue;
        }
        char code[5];
        std::snprintf(code, sizeof code, "\\x%02x", static_cast<uint8_t>(text[at++]));
        escaped += code;
    }
    return escaped;
}
