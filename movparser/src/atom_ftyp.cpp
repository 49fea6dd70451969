// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_ftyp.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error FtypAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    return ERROR_OKAY;
}

MovAtom::Error FtypAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void FtypAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "FtypAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintFourCC(out, block.Depth(), "MajorBrand: ", majorBrand);
    PrintLine(out, block.Depth(), "MinorVersion: %d", minorVersion);
    for (const uint32_t brand : compatibleBrands)
        PrintFourCC(out, block.Depth(), "CompatibleBrand: ", brand);
}

uint64_t FtypAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
