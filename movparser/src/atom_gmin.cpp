// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_gmin.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error BaseMediaInfoAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error BaseMediaInfoAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void BaseMediaInfoAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "BaseMediaInfoAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "GraphicsMode: %d", graphicsMode);
    PrintLine(out, block.Depth(), "OpColor: %d %d %d", opColor[0], opColor[1], opColor[2]);
    PrintLine(out, block.Depth(), "Balance: %d", balance);
    PrintLine(out, block.Depth(), "Reserved: %d", reserved);
}

uint64_t BaseMediaInfoAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
