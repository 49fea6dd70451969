// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_printer.h"

#include <cstdarg>
#include <cstdio>

namespace Tavro::MovParserLib {

namespace {

void AppendFormatted(std::string *out, const char *format, va_list arguments)
{
    char text[128];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    if (length > 0 && length < static_cast<int>(sizeof text)) {
        out->append(text, static_cast<size_t>(length));
    } else if (length > 0) {
        const size_t old = out->size();
        out->resize(old + static_cast<size_t>(length) + 1);
        std::vsnprintf(&(*out)[old], static_cast<size_t>(length) + 1, format, again);
        out->resize(old + static_cast<size_t>(length)); // without the terminator
    }
    va_end(again);
}

} // namespace

void PrintIndent(std::string *out, uint32_t depth)
{
    if (!out)
        return;
    for (uint32_t i = 0; i < depth; ++i)
        out->append("|\t");
}

void PrintText(std::string *out, const char *format, ...)
{
    if (!out)
        return;
    va_list arguments;
    va_start(arguments, format);
    AppendFormatted(out, format, arguments);
    va_end(arguments);
}

void PrintLine(std::string *out, uint32_t depth, const char *format, ...)
{
    if (!out)
        return;
    PrintIndent(out, depth);
    va_list arguments;
    va_start(arguments, format);
    AppendFormatted(out, format, arguments);
    va_end(arguments);
    out->push_back('\n');
}

void PrintFourCC(std::string *out, uint32_t depth, const char *label, uint32_t value)
{
    PrintLine(out, depth, "%s%c%c%c%c", label, static_cast<char>(value >> 24),
              static_cast<char>(value >> 16), static_cast<char>(value >> 8),
              static_cast<char>(value));
}

PrintBlock::PrintBlock(std::string *out, uint32_t depth, const char *name, const char *endName)
    : m_out(out)
    , m_depth(depth)
    , m_endName(endName)
{
    PrintLine(m_out, m_depth, "***** %s Begin", name);
}

PrintBlock::~PrintBlock()
{
    PrintLine(m_out, m_depth, "***** %s End", m_endName);
}

} // namespace Tavro::MovParserLib
