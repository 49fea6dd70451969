// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_vmhd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error VideoMediaInformationHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error VideoMediaInformationHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void VideoMediaInformationHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "VideoMediaInformationHeaderAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "GraphicsMode: %d", graphicsMode);
    PrintLine(out, block.Depth(), "OpColor: %d %d %d", opColor[0], opColor[1], opColor[2]);
}

uint64_t VideoMediaInformationHeaderAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
