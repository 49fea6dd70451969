// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `free`: space that is not used.

#include "movparser/src/mov_atom.h"

namespace Tavro::MovParserLib {

/// Only the size is held. Read() stops behind the preamble: the payload is neither read nor
/// skipped, and `freePayloadSize` stays as it is.
class FreeAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("free");

    FreeAtom()
        : MovAtom(kType)
    { }

    /// The total counts the preamble: 16 bytes when it needs 64 bits, else 8.
    explicit FreeAtom(unsigned long totalSizeIncludingPreamble);

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Refuses a total under 9 with ERROR_INVALID_ARG: no payload would be left.
    [[nodiscard]] Error SetSize(unsigned long totalSizeIncludingPreamble);

    uint64_t freePayloadSize = 0;
};

} // namespace Tavro::MovParserLib
