// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/DataOffsets.h"

#include "movparser/src/mov_atom.h"

#include <algorithm>
#include <functional>
#include <limits>

using Tavro::MovParserLib::FourCC;

namespace {
constexpr uint64_t kMax32 = std::numeric_limits<uint32_t>::max();

/// Whether the way to places in the file goes on from an atom to its child. Only known ways are
/// gone, so that atoms nested without end are not.
bool leadsOn(uint32_t parent, uint32_t child)
{
    switch (child) {
    case FourCC("trak"):
        return parent == FourCC("moov");
    case FourCC("mdia"):
        return parent == FourCC("trak");
    case FourCC("minf"):
        return parent == FourCC("mdia");
    case FourCC("stbl"):
        return parent == FourCC("minf");
    case FourCC("traf"):
        return parent == FourCC("moof");
    case FourCC("udta"):
        return parent == FourCC("moov") || parent == FourCC("trak");
    case FourCC("meta"):
        return parent != FourCC("meta");
    case FourCC("iloc"):
        return parent == FourCC("meta");
    default:
        return false;
    }
}

/// The entries of a table of offsets (`stco`, `co64`, `saio`), as many as really are there.
struct OffsetTable
{
    explicit OffsetTable(RawAtom *table)
        : atom(table)
    {
        const std::vector<uint8_t> &fields = atom->fields;
        if (fields.size() < 4)
            return;
        const bool isAuxiliary = atom->type == FourCC("saio");
        width = (isAuxiliary ? fields[0] != 0 : atom->type == FourCC("co64")) ? 8 : 4;
        // Version, flags and the count; the flag says that the kind of information stands between.
        head = isAuxiliary && (fields[3] & 1) != 0 ? 16 : 8;
        if (fields.size() >= head)
            count = std::min<uint64_t>(readBigEndian(fields.data() + head - 4, 4),
                                       (fields.size() - head) / width);
    }

    uint64_t at(size_t i) const { return readBigEndian(entry(i), width); }

    uint8_t *entry(size_t i) const { return atom->fields.data() + head + i * width; }

    RawAtom *atom;
    size_t head = 8;
    size_t width = 4;
    size_t count = 0;
};

bool outgrows(const OffsetTable &table, const OffsetShift &shift)
{
    for (size_t i = 0; table.width == 4 && i < table.count; ++i) {
        if (shift(table.at(i)) > kMax32)
            return true;
    }
    return false;
}

void widen(const OffsetTable &table)
{
    std::vector<uint8_t> wide(table.head + 8 * table.count);
    std::copy_n(table.atom->fields.cbegin(), table.head, wide.begin());
    writeBigEndian(wide.data() + table.head - 4, 4, table.count);
    for (size_t i = 0; i < table.count; ++i)
        writeBigEndian(wide.data() + table.head + 8 * i, 8, table.at(i));
    if (table.atom->type == FourCC("saio"))
        wide[0] = 1;
    else
        table.atom->type = FourCC("co64");
    table.atom->fields = std::move(wide);
}

void forEachOffsetTable(RawAtom *atom, const std::function<void(RawAtom *)> &visit)
{
    for (RawAtom &child : atom->children) {
        switch (child.type) {
        case FourCC("trak"):
        case FourCC("mdia"):
        case FourCC("minf"):
        case FourCC("stbl"):
            if (!leadsOn(atom->type, child.type))
                break;
            child.split(0);
            forEachOffsetTable(&child, visit);
            break;
        case FourCC("stco"):
        case FourCC("co64"):
        case FourCC("saio"):
            if (atom->type == FourCC("stbl"))
                visit(&child);
            break;
        default:
            break;
        }
    }
}

/// Whether an `iloc` has items that lie in this file at places that move. One that cannot be
/// understood counts as if it had.
bool locatesMovedItems(const std::vector<uint8_t> &fields, const OffsetShift &shift)
{
    size_t at = 0;
    bool isCut = false;
    const auto take = [&](size_t bytes) -> uint64_t {
        isCut = isCut || bytes > 8 || bytes > fields.size() - at;
        if (isCut || bytes == 0)
            return 0;
        at += bytes;
        return readBigEndian(&fields[at - bytes], bytes);
    };
    const uint64_t version = take(4) >> 24;
    const uint64_t sizes = take(2);
    const uint64_t items = take(version < 2 ? 2 : 4);
    for (uint64_t i = 0; i < items && !isCut; ++i) {
        take(version < 2 ? 2 : 4);
        const uint64_t method = version == 0 ? 0 : take(2) & 15;
        const uint64_t reference = take(2);
        const uint64_t base = take((sizes >> 4) & 15);
        for (uint64_t extents = take(2); extents > 0 && !isCut; --extents) {
            take(version == 0 ? 0 : sizes & 15);
            const uint64_t place = base + take(sizes >> 12);
            take((sizes >> 8) & 15);
            if (method == 0 && reference == 0 && shift(place) != place)
                return true;
        }
    }
    return isCut;
}

bool holdMovedItems(uint32_t parent, const std::vector<RawAtom> &atoms, const OffsetShift &shift)
{
    return std::any_of(atoms.cbegin(), atoms.cend(), [parent, &shift](const RawAtom &atom) {
        return leadsOn(parent, atom.type) && hasMovedItems(atom, shift);
    });
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

OffsetShift relocateTables(RawAtom *moov, uint64_t oldSize, uint64_t oldEnd)
{
    moov->split(0);
    OffsetShift shift{oldEnd, 0};
    for (bool grew = true; grew;) {
        grew = false;
        shift.distance = static_cast<int64_t>(moov->size() - oldSize);
        forEachOffsetTable(moov, [&](RawAtom *atom) {
            const OffsetTable table(atom);
            if (outgrows(table, shift)) {
                widen(table);
                grew = true;
            }
        });
    }
    forEachOffsetTable(moov, [&shift](RawAtom *atom) {
        const OffsetTable table(atom);
        for (size_t i = 0; i < table.count; ++i)
            writeBigEndian(table.entry(i), table.width, shift(table.at(i)));
    });
    return shift;
}

bool hasMovedItems(const RawAtom &atom, const OffsetShift &shift)
{
    if (atom.type == FourCC("iloc"))
        return locatesMovedItems(atom.fields, shift);
    if (!atom.children.empty())
        return holdMovedItems(atom.type, atom.children, shift);
    // Looked at in a copy: what is taken apart is not always put together to the same bytes.
    RawAtom parts = atom;
    // QuickTime's `meta` begins with its first child, that of other films with version and flags.
    const bool hasVersion = atom.type == FourCC("meta")
        && (atom.fields.size() < 8 || readBigEndian(&atom.fields[4], 4) != FourCC("hdlr"));
    parts.split(hasVersion ? 4 : 0);
    return holdMovedItems(parts.type, parts.children, shift);
}

bool relocateSegmentIndex(RawAtom *sidx, uint64_t end, const OffsetShift &shift)
{
    std::vector<uint8_t> &fields = sidx->fields;
    if (fields.empty())
        return true;
    const size_t width = fields[0] == 0 ? 4 : 8;
    const size_t place = 12 + width; // behind version, flags, the reference, its scale and a time
    if (fields.size() < place + width)
        return true;
    // The offset counts from the index's own end, which may move with what it points at.
    const uint64_t target = end + readBigEndian(&fields[place], width);
    const uint64_t offset = shift(target) - shift(end);
    if (width == 4 && offset > kMax32)
        return false;
    writeBigEndian(&fields[place], width, offset);
    return true;
}

bool relocateFragment(RawAtom *atom, const OffsetShift &shift)
{
    atom->split(0);
    bool fits = true;
    for (RawAtom &child : atom->children) {
        if (child.type == FourCC("traf") && leadsOn(atom->type, child.type))
            fits = relocateFragment(&child, shift) && fits;
        else if (child.type == FourCC("tfhd"))
            relocateFragmentHeader(&child, shift);
        else if (child.type == FourCC("tfra"))
            fits = relocateFragmentIndex(&child, shift) && fits;
    }
    return fits;
}
