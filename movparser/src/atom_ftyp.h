// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `ftyp`: the file's brands.

#include "movparser/src/mov_atom.h"

#include <array>
#include <tuple>

namespace Tavro::MovParserLib {

/// Written with exactly four compatible brands. Read() takes the preamble only and stops behind
/// it, since files carry any number of brands and none of them decides anything here.
class FtypAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("ftyp");

    FtypAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t majorBrand = FourCC("qt  ");
    uint32_t minorVersion = 1;
    std::array<uint32_t, 4> compatibleBrands = {FourCC("qt  "), 0, 0, 0};

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.majorBrand, self.minorVersion, self.compatibleBrands);
    }
};

} // namespace Tavro::MovParserLib
