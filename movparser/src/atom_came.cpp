// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_came.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

void TavroCameraIDAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "CAMEAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintBytes(out, block.Depth(), "Camera ID: ");
}

} // namespace Tavro::MovParserLib
