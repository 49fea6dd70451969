// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_smhd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error SoundMediaInformationHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error SoundMediaInformationHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void SoundMediaInformationHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SoundMediaInformationHeaderAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Balance: %d", balance);
    PrintLine(out, block.Depth(), "Reserved: %d", reserved);
}

uint64_t SoundMediaInformationHeaderAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
