// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An entry of `stsd`. It looks like an atom, but its type is the format of the data, and which
// class reads it follows from the kind of the track alone.

#include "movparser/src/mov_atom.h"

#include <array>
#include <memory>
#include <tuple>

namespace Tavro::MovParserLib {

class SampleDescription
{
public:
    SampleDescription() = default;
    SampleDescription(const SampleDescription &other) = default;
    virtual ~SampleDescription() = default;

    virtual SampleDescription &operator=(const SampleDescription &other);
    /// Bytes that the entry occupies when written.
    virtual uint64_t GetSize() const;
    /// Reads the entry at the cursor. A failure leaves the cursor at its first byte; a size that is
    /// shorter than the fields, 0 too, is none: the next entry then begins inside of this one.
    [[nodiscard]] virtual MovAtom::Error Read(FileBuffer &buffer);
    /// Writes the entry with the size that GetSize() gives.
    [[nodiscard]] virtual MovAtom::Error Write(FileBuffer &buffer);
    /// Dumps to standard output what PrintToString() appends.
    virtual void Print(uint32_t depth) const;
    virtual void PrintToString(std::string *out, uint32_t depth) const;
    virtual std::unique_ptr<SampleDescription> Clone() const;

    uint32_t size = 0; ///< Bytes with all fields, as read or as last written.
    uint32_t data_format = 0; ///< The fourcc of the codec.
    std::array<uint8_t, 6> reserved = {};
    uint16_t data_reference_index = 1;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.size, self.data_format, self.reserved, self.data_reference_index);
    }
};

} // namespace Tavro::MovParserLib
