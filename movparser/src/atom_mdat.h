// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `mdat`: the preamble in front of the media data.

#include "movparser/src/mov_atom.h"

namespace Tavro::MovParserLib {

/// Only the preamble is read and written; the data behind it never pass through this class.
class MdatAtomPrefix : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("mdat");

    MdatAtomPrefix()
        : MovAtom(kType)
    { }

    /// The total counts the preamble and the data.
    explicit MdatAtomPrefix(uint64_t totalSize)
        : MdatAtomPrefix()
    {
        size = totalSize;
    }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;

    /// The total, not the bytes of the preamble.
    uint64_t GetSize() const override { return size; }

    /// ERROR_INVALID_ARG while the current size is under 9: a prefix without data stays so.
    [[nodiscard]] Error SetSize(uint64_t totalSize);
};

} // namespace Tavro::MovParserLib
