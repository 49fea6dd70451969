// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Fragment.h"

#include "movparser/src/mov_atom.h"
#include "tools/DataOffsets.h"

#include <algorithm>
#include <limits>

using Tavro::MovParserLib::FourCC;

namespace {
// Of `tfhd`.
constexpr uint64_t kHasBase = 0x1;
constexpr uint64_t kHasDescription = 0x2;
constexpr uint64_t kHasDefaultDuration = 0x8;
constexpr uint64_t kHasDefaultSize = 0x10;
constexpr uint64_t kCountsFromFragment = 0x20000;
constexpr size_t kBaseField = 8; // behind version, flags and the track
// Of `trun`.
constexpr uint64_t kHasOffset = 0x1;
constexpr uint64_t kHasFirstFlags = 0x4;
constexpr uint64_t kHasDurations = 0x100;
constexpr uint64_t kHasSizes = 0x200;
constexpr uint64_t kHasFlags = 0x400;
constexpr uint64_t kHasTimes = 0x800;
constexpr size_t kOffsetField = 8; // behind version, flags and the count

constexpr uint64_t kFlagBits = 0xFFFFFF;

bool hasOffset(const RawAtom &run)
{
    return run.fields.size() >= kOffsetField + 4
        && (readBigEndian(run.fields.data(), 4) & kHasOffset) != 0;
}

/// Reads a run whose samples begin at `next` unless it says where, counted from `base`.
SampleRun readRun(RawAtom *atom, uint64_t base, uint64_t next, uint64_t defaultSize)
{
    SampleRun run{atom, next, 0};
    FieldReader fields(atom->fields);
    const uint64_t flags = fields.take(4) & kFlagBits;
    const uint64_t count = fields.take(4);
    if ((flags & kHasOffset) != 0)
        run.position = base + static_cast<uint64_t>(int64_t{static_cast<int32_t>(fields.take(4))});
    if ((flags & kHasFirstFlags) != 0)
        fields.take(4);
    if ((flags & kHasSizes) == 0) {
        run.size = count * defaultSize;
        return run;
    }
    for (uint64_t i = 0; i < count && !fields.isCut(); ++i) {
        fields.take((flags & kHasDurations) != 0 ? 4 : 0);
        run.size += fields.take(4);
        fields.take(((flags & kHasFlags) != 0 ? 4 : 0) + ((flags & kHasTimes) != 0 ? 4 : 0));
    }
    return run;
}

/// Reads a track's part; `next` is where the media of the part before it end.
TrackFragment readTrack(RawAtom *traf, uint64_t position, uint64_t next,
                        const std::map<uint32_t, TrackMedia> &tracks)
{
    TrackFragment fragment;
    fragment.atom = traf;
    traf->split(0);
    const RawAtom *header = traf->child(FourCC("tfhd"));
    FieldReader fields(header ? header->fields : traf->fields);
    const uint64_t flags = fields.take(4) & kFlagBits;
    fragment.track = static_cast<uint32_t>(fields.take(4));
    static const TrackMedia kUnknown;
    const auto known = tracks.find(fragment.track);
    const TrackMedia &media = known == tracks.cend() ? kUnknown : known->second;
    fragment.hasOwnBase = (flags & kHasBase) != 0;
    fragment.countsFromFragment = (flags & kCountsFromFragment) != 0;
    fragment.base = fragment.hasOwnBase ? fields.take(8)
        : fragment.countsFromFragment   ? position
                                        : next;
    fragment.isElsewhere = media.isElsewhere(
        (flags & kHasDescription) != 0 ? fields.take(4) : media.defaultDescription);
    if ((flags & kHasDefaultDuration) != 0)
        fields.take(4);
    const uint64_t size = (flags & kHasDefaultSize) != 0 ? fields.take(4) : media.defaultSampleSize;
    uint64_t end = fragment.base;
    for (RawAtom &child : traf->children) {
        if (child.type != FourCC("trun"))
            continue;
        fragment.runs.push_back(readRun(&child, fragment.base, end, size));
        end = fragment.runs.back().position + fragment.runs.back().size;
    }
    return fragment;
}

bool setOffset(RawAtom *run, uint64_t offset)
{
    const auto number = static_cast<int64_t>(offset);
    if (number < std::numeric_limits<int32_t>::min()
        || number > std::numeric_limits<int32_t>::max())
        return false;
    writeBigEndian(&run->fields[kOffsetField], 4, offset);
    return true;
}

/// Whether all of a fragment could be taken apart: what could not may lead somewhere too.
bool isWhole(const RawAtom &moof, const std::vector<TrackFragment> &fragments)
{
    return moof.tail.empty()
        && std::all_of(fragments.cbegin(), fragments.cend(),
                       [](const TrackFragment &fragment) { return fragment.atom->tail.empty(); });
}

/// Moves a track's part whose places count from `base` now. `next` becomes the end of its media.
bool moveTrack(const TrackFragment &fragment, uint64_t base, const PlaceMap &places, uint64_t *next)
{
    uint64_t end = base;
    for (const SampleRun &run : fragment.runs) {
        const std::optional<uint64_t> to = fragment.isElsewhere
            ? std::optional<uint64_t>(run.position)
            : places(run.position, run.size);
        if (!to || !(hasOffset(*run.atom) ? setOffset(run.atom, *to - base) : *to == end))
            return false;
        end = *to + run.size;
        *next = end;
    }
    for (RawAtom &child : fragment.atom->children) {
        if (child.type != FourCC("saio") || fragment.isElsewhere)
            continue;
        OffsetTable table(&child);
        for (size_t i = 0; i < table.count(); ++i) {
            const std::optional<uint64_t> to = places(fragment.base + table.at(i));
            if (!to || !table.set(i, *to - base))
                return false;
        }
    }
    return true;
}

/// A base that is said moves with what it leads to: by itself it may be any place, 0 too.
std::optional<uint64_t> moveBase(const TrackFragment &fragment, const PlaceMap &places)
{
    RawAtom *header = fragment.atom->child(FourCC("tfhd"));
    if (header->fields.size() < kBaseField + 8)
        return std::nullopt;
    const uint64_t first = fragment.runs.empty() ? fragment.base : fragment.runs[0].position;
    const std::optional<uint64_t> to =
        fragment.isElsewhere ? std::optional<uint64_t>(first) : places(first);
    if (!to)
        return std::nullopt;
    const uint64_t base =
        *to < first && fragment.base < first - *to ? 0 : fragment.base + (*to - first);
    writeBigEndian(&header->fields[kBaseField], 8, base);
    return base;
}
} // namespace

std::vector<TrackFragment> readFragment(RawAtom *moof, uint64_t position,
                                        const std::map<uint32_t, TrackMedia> &tracks)
{
    std::vector<TrackFragment> fragments;
    uint64_t next = position;
    moof->split(0);
    for (RawAtom &child : moof->children) {
        if (child.type != FourCC("traf"))
            continue;
        fragments.push_back(readTrack(&child, position, next, tracks));
        if (!fragments.back().runs.empty())
            next = fragments.back().runs.back().position + fragments.back().runs.back().size;
    }
    return fragments;
}

std::vector<uint64_t> auxiliaryPlaces(const TrackFragment &fragment)
{
    std::vector<uint64_t> places;
    for (RawAtom &child : fragment.atom->children) {
        if (child.type != FourCC("saio"))
            continue;
        const OffsetTable table(&child);
        for (size_t i = 0; i < table.count(); ++i)
            places.push_back(fragment.base + table.at(i));
    }
    return places;
}

bool relocateFragment(RawAtom *moof, uint64_t position,
                      const std::map<uint32_t, TrackMedia> &tracks, const PlaceMap &places)
{
    const std::optional<uint64_t> begin = places(position);
    const std::vector<TrackFragment> fragments = readFragment(moof, position, tracks);
    if (!begin || !isWhole(*moof, fragments))
        return false;
    uint64_t next = *begin;
    for (const TrackFragment &fragment : fragments) {
        const std::optional<uint64_t> base = fragment.hasOwnBase ? moveBase(fragment, places)
            : fragment.countsFromFragment                        ? begin
                                                                 : next;
        if (!base || !moveTrack(fragment, *base, places, &next))
            return false;
    }
    return true;
}
