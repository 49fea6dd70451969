// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `gmin`: the header of media that are neither video nor sound.

#include "movparser/src/mov_full_atom.h"

#include <array>
#include <tuple>

namespace Tavro::MovParserLib {

class BaseMediaInfoAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("gmin");

    BaseMediaInfoAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint16_t graphicsMode = 0;
    std::array<uint16_t, 3> opColor = {}; ///< Red, green, blue.
    uint16_t balance = 0; ///< 8.8.
    uint16_t reserved = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.graphicsMode, self.opColor, self.balance, self.reserved);
    }
};

} // namespace Tavro::MovParserLib
