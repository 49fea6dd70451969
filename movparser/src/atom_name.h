// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `name`: a text with its language, as time code descriptions carry it.

#include "movparser/src/mov_atom.h"

#include <string>

namespace Tavro::MovParserLib {

class NameAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("name");

    NameAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint16_t language = 0;

    const std::string &GetName() const { return m_name; }

    /// At most 65535 bytes, which is asserted.
    void SetName(const char *name);

private:
    std::string m_name;
};

} // namespace Tavro::MovParserLib
