// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_dinf.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error DataInformationAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadOptionalChild(ChildRange(scope, size), &dataReference));
    return scope.Finish(size);
}

MovAtom::Error DataInformationAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteChild(buffer, dataReference);
}

void DataInformationAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "DataInformationAtom");
    MovAtom::PrintToString(out, block.Depth());
    block.Child(dataReference);
}

uint64_t DataInformationAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfChild(dataReference);
}

} // namespace Tavro::MovParserLib
