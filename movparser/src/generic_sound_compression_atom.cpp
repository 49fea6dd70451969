// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/generic_sound_compression_atom.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

void GenericSoundCompressionAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "GenericSoundCompressionAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintIndent(out, block.Depth());
    PrintText(out, "Data: ");
    for (uint64_t i = 0; i < DataSize(); ++i)
        PrintText(out, "%02x ", Data()[i]);
    PrintText(out, "\n");
}

} // namespace Tavro::MovParserLib
