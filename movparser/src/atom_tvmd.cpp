// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_tvmd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error TVMFHandlerAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error TVMFHandlerAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void TVMFHandlerAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TVMFHandlerAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Value: %u", value);
}

uint64_t TVMFHandlerAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
