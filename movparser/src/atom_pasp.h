// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `pasp`: the shape of a pixel.

#include "movparser/src/mov_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class PixelAspectAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("pasp");

    PixelAspectAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t horizontalSpacing = 1;
    uint32_t verticalSpacing = 1;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.horizontalSpacing, self.verticalSpacing);
    }
};

} // namespace Tavro::MovParserLib
