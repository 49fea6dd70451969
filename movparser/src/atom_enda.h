// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `enda`: the byte order of uncompressed sound.

#include "movparser/src/mov_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class EndianAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("enda");

    EndianAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint16_t littleEndian = 0; ///< 1 for little-endian, 0 for big-endian samples.

    template <class Self> static auto Fields(Self &self) { return std::tie(self.littleEndian); }
};

} // namespace Tavro::MovParserLib
