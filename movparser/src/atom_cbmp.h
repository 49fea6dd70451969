// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `cbmp`: the sphere lies in the frame as the six faces of a cube.

#include "movparser/src/mov_full_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class sphericalCubeAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("cbmp");

    sphericalCubeAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t layout = 0; ///< How the faces are arranged; 0 is three by two.
    uint32_t padding = 0; ///< Pixels between the edge of a face and its picture.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.layout, self.padding);
    }
};

} // namespace Tavro::MovParserLib
