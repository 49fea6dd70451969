// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `dref`: the places that the sample descriptions name by number.

#include "movparser/src/mov_full_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

/// One place: an atom of any type whose payload is kept as bytes.
class DataReference : public MovFullAtom
{
public:
    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    std::vector<uint8_t> data;
};

class DataReferenceAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("dref");

    DataReferenceAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    std::vector<DataReference> entries;
};

} // namespace Tavro::MovParserLib
