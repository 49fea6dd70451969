// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_equi.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error sphericalEquiAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error sphericalEquiAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void sphericalEquiAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "sphericalEquiAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "projection_bounds_top: %u", projection_bounds_top);
    PrintLine(out, block.Depth(), "projection_bounds_bottom: %u", projection_bounds_bottom);
    PrintLine(out, block.Depth(), "projection_bounds_left: %u", projection_bounds_left);
    PrintLine(out, block.Depth(), "projection_bounds_right: %u", projection_bounds_right);
}

uint64_t sphericalEquiAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
