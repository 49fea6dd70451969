// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What in a film points at places in the file, so that it follows when the movie atom changes size.

#include "tools/RawAtom.h"

/// A piece of the file that has moved: everything from `begin` on lies `distance` further on.
struct OffsetShift
{
    uint64_t begin = 0; ///< In the old file.
    int64_t distance = 0;

    uint64_t operator()(uint64_t offset) const
    {
        return offset < begin ? offset : offset + static_cast<uint64_t>(distance);
    }
};

/// Gives a changed movie atom, which took `oldSize` bytes up to `oldEnd`, the offsets of chunks and
/// of auxiliary information that hold in the new file. Tables that outgrow 32 bits become those of
/// 64, which makes the movie grow again; the shift that was settled on is returned.
OffsetShift relocateTables(RawAtom *moov, uint64_t oldSize, uint64_t oldEnd);

/// Whether an atom (`moov`, `moof` or `meta`) locates items that the shift moves. They hang
/// together in ways of their own and are not followed.
bool hasMovedItems(const RawAtom &atom, const OffsetShift &shift);

/// The distance in an index of segments (`sidx`) that ended at `end`. False where its 32-bit field
/// cannot hold the new one.
bool relocateSegmentIndex(RawAtom *sidx, uint64_t end, const OffsetShift &shift);

/// The same for the absolute offsets in a fragment (`moof`) or in the index of fragments (`mfra`).
/// False where a 32-bit field cannot hold the new one.
bool relocateFragment(RawAtom *atom, const OffsetShift &shift);
