// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `uuid`: what an XML document in the track says about a panorama.

#include "movparser/src/mov_atom.h"

namespace Tavro::MovParserLib {

class sphericalVideoLegacyAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("uuid");

    sphericalVideoLegacyAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
};

} // namespace Tavro::MovParserLib
