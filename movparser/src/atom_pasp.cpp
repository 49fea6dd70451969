// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_pasp.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error PixelAspectAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    // The cursor stays behind the last field: trailing bytes are the parent's next child.
    return ERROR_OKAY;
}

MovAtom::Error PixelAspectAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void PixelAspectAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "PixelAspectAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "HorizontalSpacing: %d", horizontalSpacing);
    PrintLine(out, block.Depth(), "VerticalSpacing: %d", verticalSpacing);
}

uint64_t PixelAspectAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
