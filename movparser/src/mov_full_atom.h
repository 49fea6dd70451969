// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The base of atoms with a version and flags.

#include "movparser/src/mov_atom.h"

#include <array>

namespace Tavro::MovParserLib {

class MovFullAtom : public MovAtom
{
public:
    MovFullAtom() = default;
    MovFullAtom(const MovFullAtom &other) = default;

    /// Both read preamble, version and flags; every failure is ERROR_ATOM_READ_FAILED.
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Read(FileBuffer &buffer, uint32_t expectedType) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    using MovAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;
    virtual MovFullAtom &operator=(const MovFullAtom &other);

    uint8_t version = 0;
    std::array<uint8_t, 3> flags = {}; ///< In file order.

protected:
    explicit MovFullAtom(uint32_t type_)
        : MovAtom(type_)
    { }
};

} // namespace Tavro::MovParserLib
