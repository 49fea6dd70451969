// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_mdhd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error MediaHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullDatedAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error MediaHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullDatedAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void MediaHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "MediaHeaderAtom");
    MovFullDatedAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "TimeScale: %d", timeScale);
    PrintLine(out, block.Depth(), "Duration: %d", duration);
    PrintLine(out, block.Depth(), "Language: %d", language);
    PrintLine(out, block.Depth(), "Quality: %d", quality);
}

uint64_t MediaHeaderAtom::GetSize() const
{
    return MovFullDatedAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
