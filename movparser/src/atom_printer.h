// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The form of the atom dumps: lines indented by depth, and a Begin and an End line around each
// class. All functions do nothing with a null `out`.

#include <cstdint>
#include <string>

namespace Tavro::MovParserLib {

/// `depth` copies of "|\t".
void PrintIndent(std::string *out, uint32_t depth);

/// Appends formatted text without indent or line end.
[[gnu::format(printf, 2, 3)]] void PrintText(std::string *out, const char *format, ...);

/// An indented line; the line end is added.
[[gnu::format(printf, 3, 4)]] void PrintLine(std::string *out, uint32_t depth, const char *format,
                                             ...);

/// An indented line of a label and four characters.
void PrintFourCC(std::string *out, uint32_t depth, const char *label, uint32_t value);

/// An indented line of a label and what `print(entry)` appends for each entry of a table.
template <class Table, class Print>
void PrintTable(std::string *out, uint32_t depth, const char *label, const Table &table,
                Print &&print)
{
    PrintIndent(out, depth);
    PrintText(out, "%s", label);
    for (const auto &entry : table)
        print(entry);
    PrintText(out, "\n");
}

/// Prints the Begin line at once and the End line when it goes out of scope. The atom's own lines
/// and its children stand one deeper, at `Depth()`.
class PrintBlock
{
public:
    PrintBlock(std::string *out, uint32_t depth, const char *name)
        : PrintBlock(out, depth, name, name)
    { }

    /// For the one class whose two lines bear different names.
    PrintBlock(std::string *out, uint32_t depth, const char *name, const char *endName);
    ~PrintBlock();
    PrintBlock(const PrintBlock &) = delete;
    PrintBlock &operator=(const PrintBlock &) = delete;

    uint32_t Depth() const { return m_depth + 1; }

    /// A child that may be absent (null).
    template <class Atom> void Child(const Atom &atom) const
    {
        if (atom)
            atom->PrintToString(m_out, Depth());
    }

private:
    std::string *m_out;
    uint32_t m_depth;
    const char *m_endName;
};

} // namespace Tavro::MovParserLib
