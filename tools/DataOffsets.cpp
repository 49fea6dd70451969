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

/// Adds the tables of an atom that has been taken apart; `files` are those of the `minf` around it.
void findOffsetTables(RawAtom *atom, const std::vector<bool> &files,
                      std::vector<OffsetTable> *tables)
{
    std::shared_ptr<const TrackMedia> media;
    if (atom->type == FourCC("stbl")
        && std::find(files.cbegin(), files.cend(), true) != files.cend())
        media = std::make_shared<TrackMedia>(*atom, files);
    for (RawAtom &child : atom->children) {
        switch (child.type) {
        case FourCC("trak"):
        case FourCC("mdia"):
        case FourCC("minf"):
        case FourCC("stbl"):
            if (!leadsOn(atom->type, child.type))
                break;
            child.split(0);
            findOffsetTables(
                &child,
                child.type == FourCC("minf") ? filesElsewhere(child.child(FourCC("dinf"))) : files,
                tables);
            break;
        case FourCC("stco"):
        case FourCC("co64"):
        case FourCC("saio"):
            if (atom->type == FourCC("stbl"))
                tables->emplace_back(&child, atom->child(FourCC("stsc")), media);
            break;
        default:
            break;
        }
    }
}

bool outgrows(const OffsetTable &table, const PlaceMap &places)
{
    for (size_t i = 0; i < table.count(); ++i) {
        if (!table.isElsewhere(i) && !table.fits(places(table.at(i)).value_or(0)))
            return true;
    }
    return false;
}

bool relocate(OffsetTable *table, const PlaceMap &places)
{
    for (size_t i = 0; i < table->count(); ++i) {
        if (table->isElsewhere(i))
            continue;
        const std::optional<uint64_t> place = places(table->at(i));
        if (!place || !table->set(i, *place))
            return false;
    }
    return true;
}

/// Whether an `iloc` has items that lie in this file at places that move. One that cannot be
/// understood counts as if it had.
bool locatesMovedItems(const std::vector<uint8_t> &bytes, const PlaceMap &places)
{
    FieldReader fields(bytes);
    const uint64_t version = fields.take(4) >> 24;
    const uint64_t sizes = fields.take(2);
    const uint64_t items = fields.take(version < 2 ? 2 : 4);
    for (uint64_t i = 0; i < items && !fields.isCut(); ++i) {
        fields.take(version < 2 ? 2 : 4);
        const uint64_t method = version == 0 ? 0 : fields.take(2) & 15;
        const uint64_t reference = fields.take(2);
        const uint64_t base = fields.take((sizes >> 4) & 15);
        for (uint64_t extents = fields.take(2); extents > 0 && !fields.isCut(); --extents) {
            fields.take(version == 0 ? 0 : sizes & 15);
            const uint64_t place = base + fields.take(sizes >> 12);
            fields.take((sizes >> 8) & 15);
            if (method == 0 && reference == 0 && places(place) != place)
                return true;
        }
    }
    return fields.isCut();
}

bool holdMovedItems(uint32_t parent, const std::vector<RawAtom> &atoms, const PlaceMap &places)
{
    return std::any_of(atoms.cbegin(), atoms.cend(), [parent, &places](const RawAtom &atom) {
        return leadsOn(parent, atom.type) && hasMovedItems(atom, places);
    });
}

/// Hands out each offset in the index of one track's fragments: its bytes and their number.
bool forEachFragment(RawAtom *tfra, const std::function<bool(uint8_t *, size_t)> &visit)
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
        if (!visit(&fields[kHead + i * entrySize + width], width))
            return false;
    }
    return true;
}

/// The distance and the sizes in an index of segments.
struct SegmentIndex
{
    explicit SegmentIndex(const RawAtom &sidx)
    {
        FieldReader fields(sidx.fields);
        width = fields.take(4) >> 24 == 0 ? 4 : 8;
        fields.take(8); // the reference and its scale
        fields.take(width); // a time
        place = fields.position();
        distance = fields.take(width);
        isWhole = !fields.isCut();
        for (uint64_t left = fields.take(4) & 0xFFFF; left > 0 && !fields.isCut(); --left) {
            size += fields.take(4) & 0x7FFFFFFF;
            fields.take(8);
        }
    }

    size_t width = 4;
    size_t place = 0; ///< Of the distance in the atom.
    uint64_t distance = 0;
    uint64_t size = 0; ///< Of all segments.
    bool isWhole = false;
};
} // namespace

OffsetTable::OffsetTable(RawAtom *atom)
    : m_atom(atom)
{
    FieldReader fields(atom->fields);
    const bool isAuxiliary = atom->type == FourCC("saio");
    const uint64_t versionAndFlags = fields.take(4);
    if (isAuxiliary ? versionAndFlags >> 24 != 0 : atom->type == FourCC("co64"))
        m_width = 8;
    if (isAuxiliary && (versionAndFlags & 1) != 0)
        fields.take(8); // the kind of information
    const uint64_t count = fields.take(4);
    m_head = fields.position();
    m_count = std::min<uint64_t>(count, fields.left() / m_width);
}

OffsetTable::OffsetTable(RawAtom *atom, const RawAtom *chunks,
                         std::shared_ptr<const TrackMedia> media)
    : OffsetTable(atom)
{
    m_chunks = chunks;
    m_media = std::move(media);
}

bool OffsetTable::isElsewhere(size_t i) const
{
    constexpr size_t kHead = 8; // version, flags and the count
    constexpr size_t kEntry = 12; // the first chunk, how many samples each has, the description
    if (!m_media || !m_chunks || m_chunks->fields.size() < kHead)
        return false;
    const uint8_t *runs = m_chunks->fields.data() + kHead;
    const size_t count =
        std::min<uint64_t>(readBigEndian(runs - 4, 4), (m_chunks->fields.size() - kHead) / kEntry);
    if (i == 0)
        m_run = 0;
    while (m_run < count && readBigEndian(runs + m_run * kEntry, 4) <= i + 1)
        ++m_run;
    return m_run > 0 && m_media->isElsewhere(readBigEndian(runs + (m_run - 1) * kEntry + 8, 4));
}

bool OffsetTable::set(size_t i, uint64_t place)
{
    if (fits(place))
        writeBigEndian(entry(i), m_width, place);
    return fits(place);
}

void OffsetTable::widen()
{
    std::vector<uint8_t> wide(m_head + 8 * m_count);
    std::copy_n(m_atom->fields.cbegin(), m_head, wide.begin());
    writeBigEndian(wide.data() + m_head - 4, 4, m_count);
    for (size_t i = 0; i < m_count; ++i)
        writeBigEndian(wide.data() + m_head + 8 * i, 8, at(i));
    if (m_atom->type == FourCC("saio"))
        wide[0] = 1;
    else
        m_atom->type = FourCC("co64");
    m_atom->fields = std::move(wide);
    m_atom->origin = 0;
    m_width = 8;
}

std::vector<OffsetTable> offsetTables(RawAtom *movie)
{
    std::vector<OffsetTable> tables;
    movie->split(0);
    findOffsetTables(movie, {}, &tables);
    return tables;
}

bool relocateTables(RawAtom *movie, uint64_t begin, uint64_t end, PlaceMap *places)
{
    std::vector<OffsetTable> tables = offsetTables(movie);
    for (bool grew = true; grew;) {
        grew = false;
        *places = PlaceMap(*movie, begin, end);
        for (OffsetTable &table : tables) {
            if (outgrows(table, *places)) {
                table.widen();
                grew = true;
            }
        }
    }
    return std::all_of(tables.begin(), tables.end(),
                       [places](OffsetTable &table) { return relocate(&table, *places); });
}

bool hasMovedItems(const RawAtom &atom, const PlaceMap &places)
{
    if (atom.type == FourCC("iloc"))
        return locatesMovedItems(atom.fields, places);
    if (!atom.children.empty())
        return holdMovedItems(atom.type, atom.children, places);
    // Looked at in a copy: what is taken apart is not always put together to the same bytes.
    RawAtom parts = atom;
    // QuickTime's `meta` begins with its first child, that of other films with version and flags.
    const bool hasVersion = atom.type == FourCC("meta")
        && (atom.fields.size() < 8 || readBigEndian(&atom.fields[4], 4) != FourCC("hdlr"));
    parts.split(hasVersion ? 4 : 0);
    return holdMovedItems(parts.type, parts.children, places);
}

bool relocateSegmentIndex(RawAtom *sidx, uint64_t end, const PlaceMap &places)
{
    const SegmentIndex index(*sidx);
    if (!index.isWhole)
        return true;
    // The offset counts from the index's own end, which may move with what it points at.
    const std::optional<uint64_t> last = places(end - 1);
    const std::optional<uint64_t> to = places(end + index.distance, index.size);
    const uint64_t distance = last && to ? *to - (*last + 1) : 0;
    if (!last || !to || (index.width == 4 && distance > kMax32))
        return false;
    writeBigEndian(&sidx->fields[index.place], index.width, distance);
    return true;
}

bool relocateFragmentIndex(RawAtom *mfra, const PlaceMap &places)
{
    mfra->split(0);
    const auto relocateOffset = [&places](uint8_t *offset, size_t width) {
        const std::optional<uint64_t> place = places(readBigEndian(offset, width));
        if (!place || (width == 4 && *place > kMax32))
            return false;
        writeBigEndian(offset, width, *place);
        return true;
    };
    return std::all_of(mfra->children.begin(), mfra->children.end(), [&](RawAtom &child) {
        return child.type != FourCC("tfra") || forEachFragment(&child, relocateOffset);
    });
}

std::vector<uint64_t> indexedPlaces(RawAtom *index, uint64_t end)
{
    std::vector<uint64_t> places;
    if (index->type == FourCC("sidx"))
        places.push_back(end + SegmentIndex(*index).distance);
    if (index->type != FourCC("mfra"))
        return places;
    index->split(0);
    for (RawAtom &child : index->children) {
        if (child.type == FourCC("tfra"))
            forEachFragment(&child, [&places](const uint8_t *offset, size_t width) {
                places.push_back(readBigEndian(offset, width));
                return true;
            });
    }
    return places;
}
