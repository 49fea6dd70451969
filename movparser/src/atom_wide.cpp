// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_wide.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error WideAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    return scope.Finish(size);
}

void WideAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "WideAtom");
    MovAtom::PrintToString(out, block.Depth());
}

} // namespace Tavro::MovParserLib
