// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The base of the header atoms that carry two times.

#include "movparser/src/mov_full_atom.h"

namespace Tavro::MovParserLib {

/// Times are 32-bit seconds since 1 January 1904 00:00 by the local clock, in every version: the
/// 64-bit times of version 1 are not known here, and the fields behind them come out shifted.
class MovFullDatedAtom : public MovFullAtom
{
public:
    /// Both times are now.
    MovFullDatedAtom()
        : MovFullDatedAtom(0)
    { }

    MovFullDatedAtom(const MovFullDatedAtom &other) = default;

    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Read(FileBuffer &buffer, uint32_t expectedType) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    using MovFullAtom::operator=;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;
    virtual MovFullDatedAtom &operator=(const MovFullDatedAtom &other);

    uint32_t creationTime;
    uint32_t modificationTime;

protected:
    explicit MovFullDatedAtom(uint32_t type_);
};

} // namespace Tavro::MovParserLib
