// SPDX-License-Identifier: GPL-3.0-or-later
// The questions to MovFileReader about tracks and samples beyond what a player asks.
#include "movparser/src/atom_io.h"
#include "movparser/src/mov_file_reader.h"
#include "movparser/src/report_error.h"

namespace Tavro::MovParserLib {

namespace {

constexpr uint32_t kMetadata = FourCC("meta");

// Whether a track is of a kind that can be asked for. Other programs write `meta` tracks too: the
// maker's telemetry is told by its name.
bool IsOfKind(const TrackAtom &track, uint32_t handlerType)
{
    return track.HasHandlerType(handlerType)
        && (handlerType != kMetadata
            || track.media.handler->GetName().find("Tavro MET") != std::string_view::npos);
}

uint64_t Microseconds(uint64_t units, uint32_t timeScale)
{
    double value = static_cast<double>(units) * 1000000;
    if (timeScale != 0)
        value /= timeScale;
    return value < 18446744073709551615.0 ? static_cast<uint64_t>(value) : UINT64_MAX;
}

// The last unit that is told as this time or an earlier one. Searched for by what Microseconds()
// says of it: whatever that rounds, a time that was told leads back to its sample.
uint64_t LastUnitAt(uint64_t time, uint32_t timeScale)
{
    uint64_t last = 0;
    for (uint64_t step = uint64_t{1} << 63; step != 0; step >>= 1) {
        if (Microseconds(last + step, timeScale) <= time)
            last += step;
    }
    return last;
}

} // namespace

const TrackAtom *MovFileReader::Find(TrackRef track) const
{
    for (const TrackAtom &candidate : movie.tracks) {
        if (IsOfKind(candidate, track.handlerType) && track.n-- == 0)
            return &candidate;
    }
    return nullptr;
}

const TrackAtom *MovFileReader::FindTimeCodeTrack() const
{
    constexpr uint32_t kTimeCode = FourCC("tmcd");
    const TrackAtom *video = movie.FindTrack(FourCC("vide"));
    const TrackReferenceTypeAtom *reference =
        video && video->references ? video->references->Find(kTimeCode) : nullptr;
    if (!reference || reference->trackIds.empty())
        return nullptr;
    const TrackAtom *track = movie.FindTrackById(reference->trackIds.front());
    return track && track->HasHandlerType(kTimeCode) ? track : nullptr;
}

uint32_t MovFileReader::GetTrackCount(uint32_t handlerType) const
{
    uint32_t count = 0;
    for (const TrackAtom &track : movie.tracks) {
        if (IsOfKind(track, handlerType) && track.Information().HasSamples())
            ++count;
    }
    return count;
}

bool MovFileReader::HasTimeCode() const
{
    return FindTimeCodeTrack() != nullptr;
}

bool MovFileReader::HasText() const
{
    return Find({FourCC("text"), 0}) != nullptr;
}

bool MovFileReader::HasMetadata() const
{
    return Find({kMetadata, 0}) != nullptr;
}

uint32_t MovFileReader::GetTimeScale(uint32_t *timeScale, TrackRef ref) const
{
    if (!timeScale)
        return InvalidArgument();
    const TrackAtom *track = Find(ref);
    if (!track)
        return NoTrack();
    *timeScale = track->GetTimeScale();
    return 0;
}

uint32_t MovFileReader::GetMovieTimeScale(uint32_t *timeScale) const
{
    if (!timeScale)
        return InvalidArgument();
    *timeScale = movie.header.timeScale;
    return 0;
}

uint32_t MovFileReader::GetTrackDuration(uint32_t *duration, TrackRef ref) const
{
    if (!duration)
        return InvalidArgument();
    const TrackAtom *track = Find(ref);
    if (!track)
        return NoTrack();
    *duration = track->GetDuration();
    return 0;
}

uint32_t MovFileReader::GetTrackSeconds(double *seconds, TrackRef ref) const
{
    if (!seconds)
        return InvalidArgument();
    const TrackAtom *track = Find(ref);
    if (!track)
        return NoTrack();
    const uint32_t timeScale = track->GetTimeScale();
    *seconds = timeScale != 0 ? static_cast<double>(track->GetDuration()) / timeScale : 0;
    return 0;
}

uint32_t MovFileReader::GetSampleCount(uint32_t *count, TrackRef ref) const
{
    return Ask(Find(ref), &MediaInformationAtom::GetSampleCount, count);
}

uint32_t MovFileReader::GetDurationRange(uint32_t *shortest, uint32_t *longest, TrackRef ref) const
{
    return Ask(Find(ref), &MediaInformationAtom::GetDurationRange, shortest, longest);
}

uint32_t MovFileReader::GetFrameDuration(uint64_t *frameDuration, uint64_t *timeScale) const
{
    if (!frameDuration || !timeScale)
        return InvalidArgument();
    const TrackAtom *track = Find({});
    return track ? Report(track->GetFrameDuration(timeScale, frameDuration)) : NoTrack();
}

uint32_t MovFileReader::GetInfo(const TrackAtom *track, uint32_t index, SampleInfo *info) const
{
    const uint32_t error = Ask(track, &MediaInformationAtom::GetSampleInfo, index, info);
    if (error != 0)
        return error;
    info->time = Microseconds(info->time, track->GetTimeScale());
    info->duration = Microseconds(info->duration, track->GetTimeScale());
    return 0;
}

uint32_t MovFileReader::GetSampleInfo(uint32_t index, SampleInfo *info, TrackRef ref) const
{
    return GetInfo(Find(ref), index, info);
}

uint32_t MovFileReader::GetSampleIndexForTime(uint64_t time, uint32_t *index, TrackRef ref) const
{
    if (!index)
        return InvalidArgument();
    const TrackAtom *track = Find(ref);
    if (!track)
        return NoTrack();
    const uint64_t mediaTime = LastUnitAt(time, track->GetTimeScale());
    return Report(track->Information().GetSampleIndexForTime(mediaTime, index));
}

uint32_t MovFileReader::ReadSample(uint32_t index, SampleBuffer *sample, TrackRef ref)
{
    SampleInfo info;
    if (!sample)
        return InvalidArgument();
    const uint32_t error = GetSampleInfo(index, &info, ref);
    if (error != 0)
        return error;
    const FileReader::Error read =
        reader.Read(*sample, static_cast<int64_t>(info.position), info.size);
    if (read != FileReader::ERROR_OKAY)
        return ReportError(kFileReaderDomain, read);
    sample->timestamp = info.time;
    sample->duration = info.duration;
    sample->is_key = info.isKey;
    return 0;
}

uint32_t MovFileReader::ReadSample(uint32_t index, void *memory, uint64_t capacity, uint64_t *size,
                                   TrackRef ref)
{
    SampleInfo info;
    if (!memory || !size)
        return InvalidArgument();
    uint32_t error = GetSampleInfo(index, &info, ref);
    if (error != 0)
        return error;
    if (capacity < info.size)
        return ReportError(kAtomDomain, MovAtom::ERROR_INVALID_ARG);
    SampleBuffer sample;
    error = ReadSample(index, &sample, ref);
    if (error != 0)
        return error;
    std::memcpy(memory, sample.GetData(), info.size);
    *size = info.size;
    return 0;
}

uint32_t MovFileReader::GetTimeCodeStart(uint32_t *frame)
{
    SampleInfo info;
    if (!frame)
        return InvalidArgument();
    const uint32_t error = GetInfo(FindTimeCodeTrack(), 0, &info);
    if (error != 0)
        return error;
    FileBuffer buffer;
    const FileReader::Error read =
        reader.Read(buffer, static_cast<int64_t>(info.position), sizeof *frame);
    if (read != FileReader::ERROR_OKAY)
        return ReportError(kFileReaderDomain, read);
    return Report(ReadNumber(buffer, frame));
}

} // namespace Tavro::MovParserLib
