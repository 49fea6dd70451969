// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `equi`: the sphere lies in the frame as an equirectangular picture.

#include "movparser/src/mov_full_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class sphericalEquiAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("equi");

    sphericalEquiAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    // How far the picture is cropped at each side, in 1/2^32 of its size.
    uint32_t projection_bounds_top = 0;
    uint32_t projection_bounds_bottom = 0;
    uint32_t projection_bounds_left = 0;
    uint32_t projection_bounds_right = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.projection_bounds_top, self.projection_bounds_bottom,
                        self.projection_bounds_left, self.projection_bounds_right);
    }
};

} // namespace Tavro::MovParserLib
