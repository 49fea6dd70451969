// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_frma.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error FormatAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error FormatAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void FormatAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "FormatAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintFourCC(out, block.Depth(), "Format: ", format);
}

uint64_t FormatAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
