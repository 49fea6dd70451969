// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `tcmi`: how a timecode is shown.

#include "movparser/src/mov_full_atom.h"

#include <array>
#include <tuple>

namespace Tavro::MovParserLib {

class TimeCodeMediaInformationAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("tcmi");

    TimeCodeMediaInformationAtom()
        : MovFullAtom(kType)
    { }

    /// The name of the font, at most 127 bytes.
    explicit TimeCodeMediaInformationAtom(const char *name_);

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint16_t textFont = 0;
    uint16_t textFace = 0;
    uint16_t textSize = 0;
    uint16_t reserved = 0;
    std::array<uint16_t, 3> textColor = {}; ///< Red, green, blue.
    std::array<uint16_t, 3> backgroundColor = {}; ///< Red, green, blue.
    std::string name; ///< At most 255 bytes.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.textFont, self.textFace, self.textSize, self.reserved, self.textColor,
                        self.backgroundColor);
    }
};

} // namespace Tavro::MovParserLib
