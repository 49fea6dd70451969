// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `mdhd`: the units of time of a track's media.

#include "movparser/src/mov_full_dated_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class MediaHeaderAtom : public MovFullDatedAtom
{
public:
    static constexpr uint32_t kType = FourCC("mdhd");

    MediaHeaderAtom()
        : MovFullDatedAtom(kType)
    { }

    using MovFullDatedAtom::Read;
    using MovFullDatedAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t timeScale = 0; ///< Units in a second.
    uint32_t duration = 0; ///< In those units.
    uint16_t language = 0;
    uint16_t quality = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.timeScale, self.duration, self.language, self.quality);
    }
};

} // namespace Tavro::MovParserLib
