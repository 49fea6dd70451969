// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_lens.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

void TavroCameraLENSAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "LENSAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Lens Vendor: %c", data.empty() ? 0 : data.front());
}

} // namespace Tavro::MovParserLib
