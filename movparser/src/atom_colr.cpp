// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_colr.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error ColorAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    nclxReserved = 0;
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    if (colorParamType == kNclx)
        MOV_READ(scope, ReadNumber(buffer, &nclxReserved));
    // The cursor stays behind the last field: trailing bytes are the parent's next child.
    return ERROR_OKAY;
}

MovAtom::Error ColorAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer, Fields(*this)));
    return colorParamType == kNclx ? WriteNumber(buffer, nclxReserved) : ERROR_OKAY;
}

void ColorAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "ColorAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintFourCC(out, block.Depth(), "ColorParamType: ", colorParamType);
    PrintLine(out, block.Depth(), "Primaries: %d", primaries);
    PrintLine(out, block.Depth(), "TransferFunction: %d", transferFunction);
    PrintLine(out, block.Depth(), "Matrix: %d", matrix);
    if (colorParamType == kNclx)
        PrintLine(out, block.Depth(), "nclx reserved byte: %d", nclxReserved);
}

uint64_t ColorAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfFields(Fields(*this)) + (colorParamType == kNclx ? 1 : 0);
}

} // namespace Tavro::MovParserLib
