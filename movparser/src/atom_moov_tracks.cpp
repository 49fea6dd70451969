// SPDX-License-Identifier: GPL-3.0-or-later
// Adding tracks to a movie that is to be written.
#include "movparser/src/atom_moov.h"

namespace Tavro::MovParserLib {

namespace {

// A track of a kind with everything but its sample description. Throws without memory.
TrackAtom MakeTrack(uint32_t handlerType, const char *name, uint32_t timeScale)
{
    TrackAtom track;
    track.header.flags = {0, 0, 0x0F}; // enabled, in the movie, its preview and its poster
    track.media.header.timeScale = timeScale;
    track.media.handler = std::make_unique<HandlerReferenceAtom>(
        HandlerReferenceAtom::kMediaHandler, handlerType, name);
    track.media.information = MakeMediaInformation(handlerType);
    if (track.media.information->CreateSampleTable() != MovAtom::ERROR_OKAY)
        throw std::bad_alloc();
    return track;
}

} // namespace

MovAtom::Error MovieAtom::AddVideoTrack(const VideoTrackFormat &format, TrackAtom **track)
{
    if (format.width == 0 || format.height == 0 || format.aspectDenominator == 0)
        return ERROR_INVALID_ARG;
    return OrNoMemory([&] {
        TrackAtom added = MakeTrack(FourCC("vide"), "Video", format.timeScale);
        added.header.width = static_cast<uint32_t>(
            (uint64_t(format.width) << 16) * format.aspectNumerator / format.aspectDenominator);
        added.header.height = uint32_t(format.height) << 16;
        const Error error =
            added.media.information->AddVideoDescription(format.codec, format.width, format.height);
        if (error == ERROR_OKAY)
            Append(std::move(added), track);
        return error;
    });
}

MovAtom::Error MovieAtom::AddSoundTrack(const SoundTrackFormat &format, TrackAtom **track)
{
    return OrNoMemory([&] {
        TrackAtom added = MakeTrack(FourCC("soun"), "Sound", format.timeScale);
        added.header.volume = 0x100;
        const Error error = added.media.information->AddSoundDescription(
            format.codec, format.channels, format.sampleRate);
        if (error == ERROR_OKAY)
            Append(std::move(added), track);
        return error;
    });
}

void MovieAtom::Append(TrackAtom track, TrackAtom **added)
{
    track.header.trackId = header.nextTrackId;
    tracks.push_back(std::move(track));
    ++header.nextTrackId;
    if (added)
        *added = &tracks.back();
}

} // namespace Tavro::MovParserLib
