// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as a movie atom: read, and asked everything that a file reader can be asked.

#include "movparser/src/atom_moov.h"
#include "tests/movparser/box.h"

using namespace Tavro::MovParserLib;

namespace {
void askTrack(const TrackAtom &track)
{
    uint32_t number = 0;
    uint64_t first = 0;
    uint64_t second = 0;
    float yaw = 0;
    float pitch = 0;
    float roll = 0;
    std::string text;
    char name[256];
    static_cast<void>(track.GetName(name));
    static_cast<void>(track.GetFrameDuration(&first, &second));
    static_cast<void>(track.GetStereoMode(&number));
    static_cast<void>(track.GetProjection(&number));
    static_cast<void>(track.GetInitialPose(&yaw, &pitch, &roll));
    static_cast<void>(track.GetWritingTool(&text, &number));

    const MediaInformationAtom &media = track.Information();
    uint32_t width = 0;
    static_cast<void>(media.GetFrameSize(&width, &number));
    static_cast<void>(media.GetDurationRange(&width, &number));
    uint32_t count = 0;
    static_cast<void>(media.GetSampleCount(&count));
    for (const uint32_t index : {0U, 1U, 7U, count / 2, count - 1, count, UINT32_MAX}) {
        SampleInfo info;
        int64_t time = 0;
        static_cast<void>(media.GetSampleInfo(index, &info));
        static_cast<void>(media.GetDisplayTime(index, &time));
        static_cast<void>(media.GetSampleIndexForTime(info.time, &number));
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ExactBuffer input(data, size);
    MovieAtom movie;
    if (movie.Read(*input) != MovAtom::ERROR_OKAY)
        return 0;
    for (const TrackAtom &track : movie.tracks)
        askTrack(track);
    const MovieAtom copy = movie;
    std::string text;
    copy.PrintToString(&text, 0);
    return 0;
}
