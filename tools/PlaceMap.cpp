// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/PlaceMap.h"

#include <algorithm>

PlaceMap::PlaceMap(const RawAtom &movie, uint64_t begin, uint64_t end)
    : m_begin(begin)
    , m_end(end)
    , m_distance(movie.size() - (end - begin))
{
    keep(movie, begin);
}

void PlaceMap::keep(const RawAtom &atom, uint64_t position)
{
    position += atom.headerSize();
    if (atom.origin != 0 && !atom.fields.empty())
        m_pieces.push_back({atom.origin, atom.origin + atom.fields.size(), position});
    position += atom.fields.size();
    for (const RawAtom &child : atom.children) {
        keep(child, position);
        position += child.size();
    }
}

std::optional<uint64_t> PlaceMap::operator()(uint64_t place) const
{
    if (place < m_begin)
        return place;
    if (place >= m_end)
        return place + m_distance;
    const auto behind =
        std::upper_bound(m_pieces.cbegin(), m_pieces.cend(), place,
                         [](uint64_t p, const Piece &piece) { return p < piece.begin; });
    // Right behind a piece: information about no samples at all lies there.
    if (behind == m_pieces.cbegin() || place > std::prev(behind)->end)
        return std::nullopt;
    return std::prev(behind)->to + (place - std::prev(behind)->begin);
}

std::optional<uint64_t> PlaceMap::operator()(uint64_t place, uint64_t length) const
{
    const std::optional<uint64_t> to = (*this)(place);
    if (to && length > 0 && (*this)(place + length - 1) != *to + length - 1)
        return std::nullopt;
    return to;
}

bool PlaceMap::isIdentity() const
{
    return m_distance == 0
        && std::all_of(m_pieces.cbegin(), m_pieces.cend(),
                       [](const Piece &piece) { return piece.to == piece.begin; });
}
