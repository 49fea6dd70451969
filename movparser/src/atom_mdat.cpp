// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_mdat.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error MdatAtomPrefix::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    return ERROR_OKAY;
}

void MdatAtomPrefix::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "MdatAtomPrefix");
    MovAtom::PrintToString(out, block.Depth());
}

MovAtom::Error MdatAtomPrefix::SetSize(uint64_t totalSize)
{
    if (size < 9)
        return ERROR_INVALID_ARG;
    size = totalSize;
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
