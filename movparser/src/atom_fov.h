// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The four bytes `F`, `O`, `V` and 0: the field of view that the camera was set to.

#include "movparser/src/mov_raw_atom.h"

namespace Tavro::MovParserLib {

class TavroCameraFOVAtom : public MovRawAtom
{
public:
    static constexpr uint32_t kType = 0x464f5600; // three letters and a 0 byte

    TavroCameraFOVAtom()
        : MovRawAtom(kType, EmptyForm::kZeroByte)
    { }

    using MovRawAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
};

} // namespace Tavro::MovParserLib
