// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/DataOffsets.h"

#include "movparser/src/mov_atom.h"

#include <algorithm>
#include <functional>
#include <limits>

using Tavro::MovParserLib::FourCC;

namespace {
constexpr uint64_t kMax32 = std::numeric_limits<uint32_t>::max();

/// The entries of a chunk offset table, as many as really are there.
struct ChunkTable
{
    explicit ChunkTable(RawAtom *table)
        : atom(table)
        , width(table->type == FourCC("co64") ? 8 : 4)
    {
        if (atom->fields.size() >= kHead)
            count = std::min<uint64_t>(readBigEndian(atom->fields.data() + 4, 4),
                                       (atom->fields.size() - kHead) / width);
    }

    uint64_t at(size_t i) const { return readBigEndian(entry(i), width); }

    uint8_t *entry(size_t i) const { return atom->fields.data() + kHead + i * width; }

    static constexpr size_t kHead = 8; ///< Version, flags and the count.
    RawAtom *atom;
    size_t width;
    size_t count = 0;
};

bool outgrows(const ChunkTable &table, const OffsetShift &shift)
{
    for (size_t i = 0; table.width == 4 && i < table.count; ++i) {
        if (shift(table.at(i)) > kMax32)
            return true;
    }
    return false;
}

void widen(const ChunkTable &table)
{
    std::vector<uint8_t> wide(ChunkTable::kHead + 8 * table.count);
    std::copy_n(table.atom->fields.cbegin(), ChunkTable::kHead, wide.begin());
    writeBigEndian(wide.data() + 4, 4, table.count);
    for (size_t i = 0; i < table.count; ++i)
        writeBigEndian(wide.data() + ChunkTable::kHead + 8 * i, 8, table.at(i));
    table.atom->type = FourCC("co64");
    table.atom->fields = std::move(wide);
}

void forEachChunkTable(RawAtom *atom, const std::function<void(RawAtom *)> &visit)
{
    for (RawAtom &child : atom->children) {
        switch (child.type) {
        case FourCC("trak"):
        case FourCC("mdia"):
        case FourCC("minf"):
        case FourCC("stbl"):
            child.split(0);
            forEachChunkTable(&child, visit);
            break;
        case FourCC("stco"):
        case FourCC("co64"):
            visit(&child);
            break;
        default:
            break;
        }
    }
}

/// The data offset that a fragment header may carry instead of counting from the fragment itself.
void relocateFragmentHeader(RawAtom *tfhd, const OffsetShift &shift)
{
    std::vector<uint8_t> &fields = tfhd->fields;
    constexpr uint8_t kHasBaseDataOffset = 1;
    if (fields.size() >= 16 && (fields[3] & kHasBaseDataOffset) != 0)
        writeBigEndian(&fields[8], 8, shift(readBigEndian(&fields[8], 8)));
}

bool relocateFragmentIndex(RawAtom *tfra, const OffsetShift &shift)
{
    std::vector<uint8_t> &fields = tfra->fields;
    constexpr size_t kHead = 16; // version, flags, track, the widths of the numbers, the count
    if (fields.size() < kHead)
        return true;
    const size_t width = fields[0] == 1 ? 8 : 4;
    const uint8_t widths = fields[11];
    const size_t entrySize =
        2 * width + ((widths >> 4) & 3) + ((widths >> 2) & 3) + (widths & 3) + 3;
    const uint64_t count =
        std::min<uint64_t>(readBigEndian(&fields[12], 4), (fields.size() - kHead) / entrySize);
    for (uint64_t i = 0; i < count; ++i) {
        uint8_t *offset = &fields[kHead + i * entrySize + width];
        const uint64_t moved = shift(readBigEndian(offset, width));
        if (width == 4 && moved > kMax32)
            return false;
        writeBigEndian(offset, width, moved);
    }
    return true;
}
} // namespace

OffsetShift relocateChunks(RawAtom *moov, uint64_t oldSize, uint64_t oldEnd)
{
    moov->split(0);
    OffsetShift shift{oldEnd, 0};
    for (bool grew = true; grew;) {
        grew = false;
        shift.distance = static_cast<int64_t>(moov->size() - oldSize);
        forEachChunkTable(moov, [&](RawAtom *atom) {
            const ChunkTable table(atom);
            if (outgrows(table, shift)) {
                widen(table);
                grew = true;
            }
        });
    }
    forEachChunkTable(moov, [&shift](RawAtom *atom) {
        const ChunkTable table(atom);
        for (size_t i = 0; i < table.count; ++i)
            writeBigEndian(table.entry(i), table.width, shift(table.at(i)));
    });
    return shift;
}

bool relocateFragment(RawAtom *atom, const OffsetShift &shift)
{
    atom->split(0);
    bool fits = true;
    for (RawAtom &child : atom->children) {
        if (child.type == FourCC("traf"))
            fits = relocateFragment(&child, shift) && fits;
        else if (child.type == FourCC("tfhd"))
            relocateFragmentHeader(&child, shift);
        else if (child.type == FourCC("tfra"))
            fits = relocateFragmentIndex(&child, shift) && fits;
    }
    return fits;
}
