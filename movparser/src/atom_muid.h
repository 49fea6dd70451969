// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `MUID`: the identifier of the recording.

#include "movparser/src/mov_raw_atom.h"

namespace Tavro::MovParserLib {

class TavroMediaUniqueIdAtom : public MovRawAtom
{
public:
    static constexpr uint32_t kType = FourCC("MUID");

    TavroMediaUniqueIdAtom()
        : MovRawAtom(kType, EmptyForm::kPreambleOnly)
    { }

    using MovRawAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
};

} // namespace Tavro::MovParserLib
