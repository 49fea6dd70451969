// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Where the bytes of a film lie when its movie atom has been changed: what points at them follows.

#include "tools/RawAtom.h"

#include <optional>

/// Leads from places in the old file to places in the new one.
class PlaceMap
{
public:
    PlaceMap() = default;

    /// `movie` stands in the place of the old file's bytes from `begin` to `end`, of which it keeps
    /// what its atoms have as their origin.
    PlaceMap(const RawAtom &movie, uint64_t begin, uint64_t end);

    /// Nothing for what the movie atom has lost.
    std::optional<uint64_t> operator()(uint64_t place) const;

    /// The same for bytes that must stay together.
    std::optional<uint64_t> operator()(uint64_t place, uint64_t length) const;

    /// Whether nothing that is kept has moved.
    bool isIdentity() const;

private:
    struct Piece
    {
        uint64_t begin = 0;
        uint64_t end = 0;
        uint64_t to = 0;
    };

    void keep(const RawAtom &atom, uint64_t position);

    uint64_t m_begin = 0;
    uint64_t m_end = 0;
    uint64_t m_distance = 0; ///< What is added behind the movie atom; wraps where it shrinks.
    std::vector<Piece> m_pieces; ///< Of the movie atom, in their order.
};
