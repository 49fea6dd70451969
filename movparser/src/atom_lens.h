// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `LENS`: the lens of the camera. The spelling `Lens` is refused and makes the file unreadable.

#include "movparser/src/mov_raw_atom.h"

namespace Tavro::MovParserLib {

class TavroCameraLENSAtom : public MovRawAtom
{
public:
    static constexpr uint32_t kType = FourCC("LENS");

    TavroCameraLENSAtom()
        : MovRawAtom(kType, EmptyForm::kZeroByte)
    { }

    using MovRawAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
};

} // namespace Tavro::MovParserLib
