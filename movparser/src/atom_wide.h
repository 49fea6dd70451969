// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `wide`: eight bytes before an `mdat` that leave room for its 64-bit size.

#include "movparser/src/mov_atom.h"

namespace Tavro::MovParserLib {

class WideAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("wide");

    WideAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
};

} // namespace Tavro::MovParserLib
