// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_muid.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

void TavroMediaUniqueIdAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "MUIDAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintBytes(out, block.Depth(), "MUID: ");
}

} // namespace Tavro::MovParserLib
