// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `smhd`: the balance of a sound track.

#include "movparser/src/mov_full_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class SoundMediaInformationHeaderAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("smhd");

    SoundMediaInformationHeaderAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint16_t balance = 0; ///< 8.8, negative to the left.
    uint16_t reserved = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.balance, self.reserved);
    }
};

} // namespace Tavro::MovParserLib
