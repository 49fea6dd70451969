// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/mov_full_atom.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error MovFullAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer));
    MOV_READ(scope, ReadFields(buffer, std::tie(version, flags)));
    return ERROR_OKAY;
}

MovAtom::Error MovFullAtom::Read(FileBuffer &buffer, uint32_t expectedType)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, expectedType));
    MOV_READ(scope, ReadFields(buffer, std::tie(version, flags)));
    return ERROR_OKAY;
}

MovAtom::Error MovFullAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteFields(buffer, std::tie(version, flags));
}

void MovFullAtom::PrintToString(std::string *out, uint32_t depth) const
{
    MovAtom::PrintToString(out, depth);
    PrintLine(out, depth, "Version: %d", version);
    PrintLine(out, depth, "Flags: %02x %02x %02x", flags[0], flags[1], flags[2]);
}

uint64_t MovFullAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfFields(std::tie(version, flags));
}

MovFullAtom &MovFullAtom::operator=(const MovFullAtom &other)
{
    MovAtom::operator=(other);
    version = other.version;
    flags = other.flags;
    return *this;
}

} // namespace Tavro::MovParserLib
