// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_tmcd.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error TimeCodeMediaHandlerAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadOptionalChild(ChildRange(scope, size), &mediaInformation));
    return scope.Finish(size);
}

MovAtom::Error TimeCodeMediaHandlerAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteChild(buffer, mediaInformation);
}

void TimeCodeMediaHandlerAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TimeCodeMediaHandlerAtom");
    MovAtom::PrintToString(out, block.Depth());
    block.Child(mediaInformation);
}

uint64_t TimeCodeMediaHandlerAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfChild(mediaInformation);
}

} // namespace Tavro::MovParserLib
