// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `tvmd`: marks a telemetry track.

#include "movparser/src/mov_atom.h"

#include <tuple>

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
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t value = 0; ///< Its meaning is not established.

    template <class Self> static auto Fields(Self &self) { return std::tie(self.value); }
};

} // namespace Tavro::MovParserLib
