// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An atom that its parent does not model, kept as bytes so that it survives reading and writing.

#include "movparser/src/mov_atom.h"

#include <memory>

namespace Tavro::MovParserLib {

class UnparsedAtom : public MovAtom
{
public:
    UnparsedAtom() = default;

    /// A copy holds `size` minus the preamble that GetSize() counts. That is 8 bytes more than
    /// the payload for an atom that was read with a 64-bit preamble it did not need; those are 0.
    UnparsedAtom(const UnparsedAtom &other);
    UnparsedAtom &operator=(const UnparsedAtom &other);

    /// Keeps the code of the preamble, so that a parent sees ERROR_ZERO_SIZE_ATOM.
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    using MovAtom::Read;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    using MovAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Copies the payload. With a null `dst` or no capacity only its size is given.
    [[nodiscard]] Error GetData(uint8_t *dst, uint64_t capacity, uint64_t *outSize) const;

    const uint8_t *Data() const { return data.get(); }

    uint64_t DataSize() const { return dataSize; }

private:
    Error Allocate(uint64_t bytes);

    std::unique_ptr<uint8_t[]> data;
    uint64_t dataSize = 0;
};

} // namespace Tavro::MovParserLib
