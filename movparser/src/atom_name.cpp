// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_name.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace Tavro::MovParserLib {

MovAtom::Error NameAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint16_t length = 0;
    m_name.clear();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &length));
    MOV_READ(scope, ReadNumber(buffer, &language));
    MOV_READ(scope, ReadText(buffer, length, &m_name));
    return scope.Finish(size);
}

MovAtom::Error NameAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint16_t>(m_name.size())));
    MOV_WRITE(WriteNumber(buffer, language));
    return WriteBytes(buffer, m_name.data(), m_name.size());
}

void NameAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "NameAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Language: %d", language);
    PrintLine(out, block.Depth(), "Name: %s", m_name.c_str());
}

uint64_t NameAtom::GetSize() const
{
    return MovAtom::GetSize() + 2 * sizeof(uint16_t) + m_name.size();
}

void NameAtom::SetName(const char *name)
{
    const size_t length = std::strlen(name);
    assert(length <= (65535));
    m_name.assign(name, std::min<size_t>(length, UINT16_MAX));
}

} // namespace Tavro::MovParserLib
