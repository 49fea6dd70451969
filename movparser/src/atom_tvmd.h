// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `tvmd`: marks a telemetry track.

#include "movparser/src/mov_atom.h"

namespace Tavro::MovParserLib {

class TVMFHandlerAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("tvmd");

    TVMFHandlerAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
};

} // namespace Tavro::MovParserLib
