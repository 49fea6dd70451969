// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `frma`: the data format that the settings in a `wave` belong to.

#include "movparser/src/mov_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class FormatAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("frma");

    FormatAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t format = 0;

    template <class Self> static auto Fields(Self &self) { return std::tie(self.format); }
};

} // namespace Tavro::MovParserLib
