// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `fiel`: whether a frame is made of two fields, and their order.

#include "movparser/src/mov_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class FieldsAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("fiel");

    FieldsAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint8_t fields = 1;
    uint8_t detail = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.fields, self.detail);
    }
};

} // namespace Tavro::MovParserLib
