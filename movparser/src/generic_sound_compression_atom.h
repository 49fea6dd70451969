// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A sound codec's own settings in a `wave`, of any type: kept as bytes. The list of them ends with
// an atom of type 0 and no payload, which is what a new object is.

#include "movparser/src/atom_unparsed.h"

namespace Tavro::MovParserLib {

class GenericSoundCompressionAtom : public UnparsedAtom
{
public:
    using UnparsedAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
};

} // namespace Tavro::MovParserLib
