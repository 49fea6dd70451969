// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `svhd`: the program that wrote the spherical metadata.

#include "movparser/src/mov_full_atom.h"

#include <string>

namespace Tavro::MovParserLib {

class sphericalVideoHeaderAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("svhd");

    sphericalVideoHeaderAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Never holds a 0 byte.
    std::string metadata_source;

    /// Stores the text up to its first 0 byte; ERROR_INVALID_ARG when that is empty.
    [[nodiscard]] Error SetMetadataSource(const std::string &text);
};

} // namespace Tavro::MovParserLib
