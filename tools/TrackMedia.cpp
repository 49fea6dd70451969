// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TrackMedia.h"

#include "movparser/src/mov_atom.h"

using Tavro::MovParserLib::FourCC;

namespace {
constexpr size_t kTableHead = 8; // version, flags and the count

/// The children of an atom that may be absent. Looked at in a copy: what is taken apart is not
/// always put together to the same bytes.
std::vector<RawAtom> childrenOf(const RawAtom *atom, size_t fieldBytes)
{
    RawAtom parts = atom ? *atom : RawAtom();
    parts.split(fieldBytes);
    return std::move(parts.children);
}

uint32_t trackNumber(const RawAtom &track)
{
    const RawAtom *header = track.child(FourCC("tkhd"));
    if (!header)
        return 0;
    FieldReader fields(header->fields);
    const bool hasWideTimes = fields.take(4) >> 24 == 1;
    for (int times = 0; times < 2; ++times)
        fields.take(hasWideTimes ? 8 : 4);
    return static_cast<uint32_t>(fields.take(4));
}
} // namespace

std::vector<bool> filesElsewhere(const RawAtom *dinf)
{
    RawAtom places;
    places.children = childrenOf(dinf, 0);
    std::vector<bool> files;
    for (const RawAtom &file : childrenOf(places.child(FourCC("dref")), kTableHead))
        files.push_back(file.fields.size() >= 4 && (file.fields[3] & 1) == 0);
    return files;
}

TrackMedia::TrackMedia(const RawAtom &sampleTable, const std::vector<bool> &files)
{
    constexpr size_t kReserved = 6; // before the number of the data reference
    for (const RawAtom &entry : childrenOf(sampleTable.child(FourCC("stsd")), kTableHead)) {
        FieldReader fields(entry.fields);
        fields.take(kReserved);
        const uint64_t number = fields.take(2);
        elsewhere.push_back(number > 0 && number <= files.size() && files[number - 1]);
    }
}

std::map<uint32_t, TrackMedia> trackMedia(const RawAtom &movie)
{
    std::map<uint32_t, TrackMedia> all;
    for (const RawAtom &track : movie.children) {
        const RawAtom *media = track.type == FourCC("trak") ? track.child(FourCC("mdia")) : nullptr;
        const RawAtom *information = media ? media->child(FourCC("minf")) : nullptr;
        const RawAtom *samples = information ? information->child(FourCC("stbl")) : nullptr;
        if (samples)
            all[trackNumber(track)] =
                TrackMedia(*samples, filesElsewhere(information->child(FourCC("dinf"))));
    }
    for (const RawAtom &defaults : childrenOf(movie.child(FourCC("mvex")), 0)) {
        if (defaults.type != FourCC("trex"))
            continue;
        FieldReader fields(defaults.fields);
        fields.take(4); // version and flags
        TrackMedia &track = all[static_cast<uint32_t>(fields.take(4))];
        track.defaultDescription = static_cast<uint32_t>(fields.take(4));
        fields.take(4); // duration
        track.defaultSampleSize = static_cast<uint32_t>(fields.take(4));
    }
    return all;
}
