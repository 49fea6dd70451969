// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `CAME`: the camera's serial number.

#include "movparser/src/mov_raw_atom.h"

namespace Tavro::MovParserLib {

class TavroCameraIDAtom : public MovRawAtom
{
public:
    static constexpr uint32_t kType = FourCC("CAME");

    TavroCameraIDAtom()
        : MovRawAtom(kType, EmptyForm::kRefused)
    { }

    using MovRawAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
};

} // namespace Tavro::MovParserLib
