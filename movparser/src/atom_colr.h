// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `colr`: how the numbers of a picture stand for colours.

#include "movparser/src/mov_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class ColorAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("colr");

    ColorAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    static constexpr uint32_t kNclc = FourCC("nclc");
    static constexpr uint32_t kNclx = FourCC("nclx");

    uint32_t colorParamType = kNclc;
    uint16_t primaries = 1;
    uint16_t transferFunction = 1;
    uint16_t matrix = 1;
    uint8_t nclxReserved =
        0; ///< In the file with the type `nclx` only; its highest bit says full range.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.colorParamType, self.primaries, self.transferFunction, self.matrix);
    }
};

} // namespace Tavro::MovParserLib
