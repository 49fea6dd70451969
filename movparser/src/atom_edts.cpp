// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_edts.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error EditAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadOptionalChild(ChildRange(scope, size), &editList));
    return scope.Finish(size);
}

MovAtom::Error EditAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteChild(buffer, editList);
}

void EditAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "EditAtom");
    MovAtom::PrintToString(out, block.Depth());
    block.Child(editList);
}

uint64_t EditAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfChild(editList);
}

} // namespace Tavro::MovParserLib
