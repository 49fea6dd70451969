// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_cbmp.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error sphericalCubeAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error sphericalCubeAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void sphericalCubeAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "sphericalCubeAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "layout: %u", layout);
    PrintLine(out, block.Depth(), "padding: %u", padding);
}

uint64_t sphericalCubeAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
