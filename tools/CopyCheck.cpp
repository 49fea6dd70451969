// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/CopyCheck.h"

#include "movparser/src/atom_moov.h"
#include "tools/DataOffsets.h"
#include "tools/FilmFile.h"
#include "tools/Fragment.h"

#include <algorithm>
#include <cmath>

using namespace Tavro::MovParserLib;

namespace {
/// A film as it is read back.
struct Film
{
    bool open(int descriptor)
    {
        if (!file.open(descriptor) || !file.load(file.movie(), &raw))
            return false;
        payload = raw.fields;
        std::vector<uint8_t> bytes;
        raw.appendTo(&bytes);
        FileBuffer buffer;
        return buffer.Alloc(bytes.size(), bytes.data()) == FileBuffer::ERROR_OKAY
            && movie.Read(buffer) == MovAtom::ERROR_OKAY;
    }

    FilmFile file;
    RawAtom raw; ///< The movie atom.
    std::vector<uint8_t> payload; ///< Of the same, from `raw.origin` on.
    MovieAtom movie; ///< What the library keeps of it; it finds samples and tags in its own way.
};

/// What a film says about its panorama.
struct Answers
{
    explicit Answers(const MovieAtom &movie)
    {
        const TrackAtom *track = movie.FindTrack(FourCC("vide"));
        isComplete = track && track->GetProjection(&projection) == MovAtom::ERROR_OKAY
            && track->GetStereoMode(&stereoMode) == MovAtom::ERROR_OKAY
            && track->GetInitialPose(&pose[0], &pose[1], &pose[2]) == MovAtom::ERROR_OKAY
            && track->GetWritingTool(&tool, nullptr) == MovAtom::ERROR_OKAY;
        if (track && track->spherical && track->spherical->hasOwnIdentifier)
            documentMode = track->spherical->GetStereoMode();
    }

    bool isComplete = false;
    uint32_t projection = 0;
    uint32_t stereoMode = 0;
    std::array<float, 3> pose = {};
    std::string tool;
    std::optional<uint32_t> documentMode; ///< The layout by the older form.
};

bool saysWhatWasAsked(const MovieAtom &original, const MovieAtom &copy, const MovieTags &tags)
{
    const Answers before(original);
    const Answers after(copy);
    std::array<float, 3> pose = tags.pose.value_or(before.pose);
    for (float &angle : pose)
        angle = std::trunc(angle); // whole degrees are read
    return before.isComplete && after.isComplete
        && after.projection == tags.projection.value_or(before.projection)
        && after.stereoMode == tags.stereoMode.value_or(before.stereoMode) && after.pose == pose
        && after.tool == tags.tool.value_or(before.tool)
        && (!tags.stereoMode || after.documentMode.value_or(*tags.stereoMode) == *tags.stereoMode);
}

/// Compares where two films have their samples.
class PlaceCheck
{
public:
    PlaceCheck(Film *original, Film *copy)
        : m_original(*original)
        , m_copy(*copy)
    { }

    bool leadToTheSame();

private:
    using TopLevelAtom = FilmFile::TopLevelAtom;

    /// Where samples of a fragment lie in both films.
    struct Run
    {
        uint64_t before = 0;
        uint64_t after = 0;
        uint64_t size = 0;
    };

    bool haveSameAtoms() const;
    bool tablesAgree();
    bool samplesAgree() const;
    bool fragmentsAgree();
    bool agree(const TopLevelAtom &before, const TopLevelAtom &after);
    bool agree(const TrackFragment &before, const TrackFragment &after);
    bool isSamePlace(uint64_t before, uint64_t after, bool isElsewhere) const;
    bool haveSameBytes(uint64_t before, uint64_t after, uint64_t size) const;

    Film &m_original;
    Film &m_copy;
    std::map<uint32_t, TrackMedia> m_tracks;
    std::map<uint32_t, std::pair<Run, Run>> m_runs; ///< The first and last of each track.
};

bool PlaceCheck::leadToTheSame()
{
    if (m_original.movie.tracks.size() != m_copy.movie.tracks.size() || !haveSameAtoms()
        || !tablesAgree())
        return false;
    m_tracks = trackMedia(m_original.raw);
    return samplesAgree() && fragmentsAgree();
}

bool PlaceCheck::haveSameAtoms() const
{
    const auto &before = m_original.file.atoms();
    const auto &after = m_copy.file.atoms();
    const uint64_t movie = m_original.file.movie().position;
    return std::equal(before.cbegin(), before.cend(), after.cbegin(), after.cend(),
                      [movie](const TopLevelAtom &a, const TopLevelAtom &b) {
                          return a.type == b.type && (a.size == b.size || a.position == movie);
                      });
}

bool PlaceCheck::tablesAgree()
{
    const std::vector<OffsetTable> before = offsetTables(&m_original.raw);
    const std::vector<OffsetTable> after = offsetTables(&m_copy.raw);
    return std::equal(before.cbegin(), before.cend(), after.cbegin(), after.cend(),
                      [this](const OffsetTable &a, const OffsetTable &b) {
                          bool isSame = a.count() == b.count();
                          for (size_t i = 0; isSame && i < a.count(); ++i)
                              isSame = isSamePlace(a.at(i), b.at(i), a.isElsewhere(i));
                          return isSame;
                      });
}

/// The first and last sample of each track, as the library finds them.
bool PlaceCheck::samplesAgree() const
{
    const std::vector<TrackAtom> &tracks = m_original.movie.tracks;
    for (size_t i = 0; i < tracks.size(); ++i) {
        const SampleTableAtom *table = tracks[i].Information().GetSampleTable();
        const uint32_t count = table ? table->GetSampleCount() : 0;
        const auto media = m_tracks.find(tracks[i].header.trackId);
        for (const uint32_t index : {uint32_t{0}, count - 1}) {
            SampleInfo before;
            SampleInfo after;
            SampleChunk chunk;
            if (count == 0 || table->GetSampleInfo(index, &before) != MovAtom::ERROR_OKAY
                || table->sampleToChunk.GetChunk(index, &chunk) != MovAtom::ERROR_OKAY)
                continue;
            const bool isElsewhere =
                media != m_tracks.cend() && media->second.isElsewhere(chunk.sampleDescriptionId);
            const MediaInformationAtom &copied = m_copy.movie.tracks[i].Information();
            if (copied.GetSampleInfo(index, &after) != MovAtom::ERROR_OKAY
                || before.size != after.size
                || !isSamePlace(before.position, after.position, isElsewhere)
                || (!isElsewhere && !haveSameBytes(before.position, after.position, before.size)))
                return false;
        }
    }
    return true;
}

bool PlaceCheck::fragmentsAgree()
{
    const auto &before = m_original.file.atoms();
    for (size_t i = 0; i < before.size(); ++i) {
        if (!agree(before[i], m_copy.file.atoms()[i]))
            return false;
    }
    const auto isSame = [this](const Run &run) {
        return haveSameBytes(run.before, run.after, run.size);
    };
    return std::all_of(m_runs.cbegin(), m_runs.cend(), [&](const auto &track) {
        return isSame(track.second.first) && isSame(track.second.second);
    });
}

bool PlaceCheck::agree(const TopLevelAtom &before, const TopLevelAtom &after)
{
    const bool leads = before.type == FourCC("moof") || before.type == FourCC("mfra")
        || before.type == FourCC("sidx");
    if (!leads || before.isCut)
        return true;
    RawAtom a;
    RawAtom b;
    if (!m_original.file.load(before, &a) || !m_copy.file.load(after, &b))
        return false;
    if (before.type == FourCC("moof")) {
        const std::vector<TrackFragment> parts = readFragment(&a, before.position, m_tracks);
        const std::vector<TrackFragment> copied = readFragment(&b, after.position, m_tracks);
        return std::equal(
            parts.cbegin(), parts.cend(), copied.cbegin(), copied.cend(),
            [this](const TrackFragment &x, const TrackFragment &y) { return agree(x, y); });
    }
    const std::vector<uint64_t> places = indexedPlaces(&a, before.end());
    const std::vector<uint64_t> copied = indexedPlaces(&b, after.end());
    return std::equal(places.cbegin(), places.cend(), copied.cbegin(), copied.cend(),
                      [this](uint64_t x, uint64_t y) { return isSamePlace(x, y, false); });
}

bool PlaceCheck::agree(const TrackFragment &before, const TrackFragment &after)
{
    const auto isSameRun = [&](const SampleRun &x, const SampleRun &y) {
        if (!before.isElsewhere) {
            const Run run{x.position, y.position, x.size};
            m_runs.try_emplace(before.track, run, run).first->second.second = run;
        }
        return x.size == y.size && isSamePlace(x.position, y.position, before.isElsewhere);
    };
    const auto isSame = [&](uint64_t x, uint64_t y) {
        return isSamePlace(x, y, before.isElsewhere);
    };
    const std::vector<uint64_t> places = auxiliaryPlaces(before);
    const std::vector<uint64_t> copied = auxiliaryPlaces(after);
    return before.track == after.track
        && std::equal(before.runs.cbegin(), before.runs.cend(), after.runs.cbegin(),
                      after.runs.cend(), isSameRun)
        && std::equal(places.cbegin(), places.cend(), copied.cbegin(), copied.cend(), isSame);
}

/// A place counts by the top-level atom that it lies in, which the copy has as well.
bool PlaceCheck::isSamePlace(uint64_t before, uint64_t after, bool isElsewhere) const
{
    if (isElsewhere)
        return before == after;
    const auto &atoms = m_original.file.atoms();
    const auto behind =
        std::upper_bound(atoms.cbegin(), atoms.cend(), before,
                         [](uint64_t place, const TopLevelAtom &a) { return place < a.position; });
    const TopLevelAtom &from = *std::prev(behind); // the first one begins at 0
    const TopLevelAtom &to = m_copy.file.atoms()[static_cast<size_t>(&from - atoms.data())];
    if (before >= from.end()) // a cut recording leads behind its end
        return after - to.end() == before - from.end();
    if (from.position != m_original.file.movie().position)
        return after - to.position == before - from.position;
    // Within the movie atom, what stands before the place tells: what follows may be another atom.
    const uint64_t a = before - m_original.raw.origin;
    const uint64_t b = after - m_copy.raw.origin;
    const uint64_t length = std::min(uint64_t{8}, a);
    return a <= m_original.payload.size() && b <= m_copy.payload.size()
        && (a == b || (length == 8 && b >= length))
        && std::equal(m_original.payload.data() + (a - length), m_original.payload.data() + a,
                      m_copy.payload.data() + (b - length));
}

bool PlaceCheck::haveSameBytes(uint64_t before, uint64_t after, uint64_t size) const
{
    constexpr uint64_t kMost = 4096; // from either end
    const size_t length = static_cast<size_t>(std::min(size, kMost));
    const auto isSame = [&](uint64_t offset) {
        return m_original.file.bytes(before + offset, length)
            == m_copy.file.bytes(after + offset, length);
    };
    return isSame(0) && isSame(size - length);
}
} // namespace

QString faultOfCopy(int original, int copy, const MovieTags &tags)
{
    Film before;
    Film after;
    if (!before.open(original) || !after.open(copy))
        return QStringLiteral("it cannot be read back");
    if (!saysWhatWasAsked(before.movie, after.movie, tags))
        return QStringLiteral("it does not say what was asked for");
    if (!PlaceCheck(&before, &after).leadToTheSame())
        return QStringLiteral("it does not lead to the samples of the film");
    return QString();
}
