// SPDX-License-Identifier: GPL-3.0-or-later
// Adding tracks to a movie that is to be written.
#include "movparser/src/atom_moov.h"

namespace Tavro::MovParserLib {

namespace {

// A track of a kind with everything but its sample description.
TrackAtom MakeTrack(uint32_t handlerType, const char *name, uint32_t timeScale)
{
    TrackAtom track;
    track.header.flags = {0, 0, 0x0F}; // enabled, in the movie, its preview and its poster
    track.media.header.timeScale = timeScale;
    track.media.handler = std::make_unique<HandlerReferenceAtom>(
        HandlerReferenceAtom::kMediaHandler, handlerType, name);
    track.media.information = MakeMediaInformation(handlerType);
    static_cast<void>(track.media.information->CreateSampleTable());
    return track;
}

} // namespace

MovAtom::Error MovieAtom::AddVideoTrack(const VideoTrackFormat &format, TrackAtom **track)
{
    if (format.width == 0 || format.height == 0 || format.aspectDenominator == 0)
        return ERROR_INVALID_ARG;
    TrackAtom added = MakeTrack(FourCC("vide"), "Video", format.timeScale);
    added.header.width = static_cast<uint32_t>((uint64_t(format.width) << 16)
                                               * format.aspectNumerator / format.aspectDenominator);
    added.header.height = uint32_t(format.height) << 16;
    const Error error =
        added.SampleDescriptions()->AddVideoDescription(format.codec, format.width, format.height);
    if (error != ERROR_OKAY)
        return error;
    Append(std::move(added), track);
    return ERROR_OKAY;
}

MovAtom::Error MovieAtom::AddSoundTrack(const SoundTrackFormat &format, TrackAtom **track)
{
    TrackAtom added = MakeTrack(FourCC("soun"), "Sound", format.timeScale);
    added.header.volume = 0x100;
    const Error error = added.SampleDescriptions()->AddSoundDescription(
        format.codec, format.channels, format.sampleRate);
    if (error != ERROR_OKAY)
        return error;
    Append(std::move(added), track);
    return ERROR_OKAY;
}

void MovieAtom::Append(TrackAtom track, TrackAtom **added)
{
    track.header.trackId = header.nextTrackId++;
    tracks.push_back(std::move(track));
    if (added)
        *added = &tracks.back();
}

} // namespace Tavro::MovParserLib
