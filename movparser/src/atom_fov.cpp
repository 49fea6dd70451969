// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_fov.h"

#include "movparser/src/atom_printer.h"

#include <algorithm>

namespace Tavro::MovParserLib {

void TavroCameraFOVAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "FOVAtom");
    MovAtom::PrintToString(out, block.Depth());
    const std::string text(data.begin(), std::find(data.begin(), data.end(), 0));
    PrintLine(out, block.Depth(), "FOV: %s", text.c_str());
}

} // namespace Tavro::MovParserLib
