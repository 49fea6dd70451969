// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What in a film points at places in the file, so that it follows when the movie atom changes.
// Fragments have a file of their own.

#include "tools/PlaceMap.h"
#include "tools/TrackMedia.h"

/// The entries of a table of offsets (`stco`, `co64`, `saio`), as many as really are there.
class OffsetTable
{
public:
    explicit OffsetTable(RawAtom *atom);
    /// One of a movie: `chunks` is the `stsc` beside it, or null. Both atoms must stay.
    OffsetTable(RawAtom *atom, const RawAtom *chunks, std::shared_ptr<const TrackMedia> media);

    size_t count() const { return m_count; }

    uint64_t at(size_t i) const { return readBigEndian(entry(i), m_width); }

    /// Whether the bytes lie in another file. To be asked from the first entry on, in their order.
    bool isElsewhere(size_t i) const;

    /// Whether any of them may.
    bool mayLeadElsewhere() const { return m_media != nullptr; }

    bool fits(uint64_t place) const { return m_width == 8 || place >> 32 == 0; }

    /// False where the place does not fit.
    bool set(size_t i, uint64_t place);

    /// Gives each entry 64 bits. The atom becomes a new one.
    void widen();

private:
    uint8_t *entry(size_t i) const { return m_atom->fields.data() + m_head + i * m_width; }

    RawAtom *m_atom;
    const RawAtom *m_chunks = nullptr;
    std::shared_ptr<const TrackMedia> m_media; ///< Null where nothing lies elsewhere.
    size_t m_head = 8; ///< Bytes before the first entry.
    size_t m_width = 4;
    size_t m_count = 0;
    mutable size_t m_run = 0; ///< Of chunks, behind the one that was asked for last.
};

/// All of a movie atom, which is taken apart on the way to them.
std::vector<OffsetTable> offsetTables(RawAtom *movie);

/// Gives a changed movie atom, which took the old file's bytes from `begin` to `end`, the offsets
/// that hold in the new file, and `places` where everything lies there. Tables that outgrow 32 bits
/// become those of 64, which makes the movie grow again. False where an offset leads to bytes of
/// the movie atom that are no more.
bool relocateTables(RawAtom *movie, uint64_t begin, uint64_t end, PlaceMap *places);

/// Whether an atom (`moov`, `moof` or `meta`) locates items that move. They hang together in ways
/// of their own and are not followed.
bool hasMovedItems(const RawAtom &atom, const PlaceMap &places);

/// The distance in an index of segments (`sidx`) that ended at `end`. False where its 32-bit field
/// cannot hold the new one, or where the segments do not stay together.
bool relocateSegmentIndex(RawAtom *sidx, uint64_t end, const PlaceMap &places);

/// The offsets in the index of fragments (`mfra`). False where a 32-bit field cannot hold the new
/// one.
bool relocateFragmentIndex(RawAtom *mfra, const PlaceMap &places);

/// Where such indices lead to.
std::vector<uint64_t> indexedPlaces(RawAtom *index, uint64_t end);
