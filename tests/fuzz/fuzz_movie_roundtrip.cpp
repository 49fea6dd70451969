// SPDX-License-Identifier: GPL-3.0-or-later
// What was read must be written and read again to the same tree.

#include "movparser/src/atom_moov.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/video_sample_description.h"
#include "tests/movparser/box.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

using namespace Tavro::MovParserLib;

namespace {
// A number in an ambisonic atom makes more channels than it had; enough for all that fits an input.
constexpr uint64_t kMaxWritten = 64U << 20;

/// Text that a document brings back as it was: reading takes each byte as a character of its own,
/// and a tag within a text can end it.
bool staysAsItIs(const std::string &text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '<'; });
}

template <class Description, class Act> void forEachDescription(MovieAtom *movie, Act &&act)
{
    for (TrackAtom &track : movie->tracks) {
        const SampleDescriptionAtom *descriptions = track.SampleDescriptions();
        if (!descriptions)
            continue;
        for (const auto &entry : descriptions->entries) {
            if (auto *description = dynamic_cast<Description *>(entry.get()))
                act(*description);
        }
    }
}

/// Takes out what is known not to come back, each by a rule of its own.
void removeOneWayData(MovieAtom *movie)
{
    if (movie->user_data) {
        movie->user_data->settings.reset(); // writing reverses the bytes of each word
        const auto &camera = movie->user_data->cameraId;
        if (camera && camera->data.empty())
            movie->user_data->cameraId.reset(); // refuses to be written
    }
    for (TrackAtom &track : movie->tracks) {
        if (track.spherical && !staysAsItIs(track.spherical->StitchingSoftware))
            track.spherical->StitchingSoftware.clear();
        if (track.spherical && !staysAsItIs(track.spherical->StereoMode))
            track.spherical->StereoMode = "mono";
    }
    forEachDescription<SoundSampleDescription>(movie, [](SoundSampleDescription &sound) {
        if (sound.spatialAudio && sound.spatialAudio->ambisonic_order > 20)
            sound.spatialAudio.reset(); // refused, or more channels than there is memory
    });
}

/// What the first writing changes by rules of its own, and the second does not.
void removeWhatWritingSettles(MovieAtom *movie)
{
    forEachDescription<SoundSampleDescription>(movie, [](SoundSampleDescription &sound) {
        if (sound.spatialAudio && sound.spatialAudio->ambisonic_order != 0)
            sound.spatialAudio.reset(); // has as many channels as its order says
    });
    forEachDescription<VideoSampleDescription>(movie, [](VideoSampleDescription &video) {
        if (video.avcc) // of several parameter sets the first is kept
            video.avcc->numOfSequenceParameterSets = video.avcc->numOfPictureParameterSets = 0;
    });
}

std::string printed(const MovieAtom &movie)
{
    std::string text;
    movie.PrintToString(&text, 0);
    return text;
}

/// The tree without the sizes of its atoms, which are those of its own bytes.
std::string printedWithoutSizes(MovieAtom movie)
{
    removeWhatWritingSettles(&movie);
    std::istringstream lines(printed(movie));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("|\tSize: ") == std::string::npos)
            text += line + '\n';
    }
    return text;
}

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "round trip: %s\n", what);
    std::abort();
}

void requireSame(const std::string &before, const std::string &after, const char *what)
{
    if (before != after)
        std::fprintf(stderr, "---- before\n%s---- read again\n%s", before.c_str(), after.c_str());
    require(before == after, what);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ExactBuffer input(data, size);
    MovieAtom movie;
    if (movie.Read(*input) != MovAtom::ERROR_OKAY)
        return 0;
    removeOneWayData(&movie);
    const std::string asRead = printedWithoutSizes(movie);
    const uint64_t bytes = movie.GetSize();
    if (bytes > kMaxWritten)
        return 0;
    // An atom that claimed more than 4 GiB counts as one with the long preamble until it has been
    // written once: the first writing settles the sizes, and the second is the one that counts.
    FileBuffer draft;
    require(draft.Alloc(bytes) == FileBuffer::ERROR_OKAY, "no memory");
    require(movie.Write(draft) == MovAtom::ERROR_OKAY, "what was read cannot be written");
    FileBuffer buffer;
    require(buffer.Alloc(movie.GetSize()) == FileBuffer::ERROR_OKAY, "no memory");
    require(movie.Write(buffer) == MovAtom::ERROR_OKAY, "it cannot be written twice");
    require(buffer.BytesLeft() == 0, "fewer bytes were written than the size says");
    require(buffer.Seek(0, 0) == FileBuffer::ERROR_OKAY, "seek");
    MovieAtom again;
    require(again.Read(buffer) == MovAtom::ERROR_OKAY, "what was written cannot be read");
    requireSame(asRead, printedWithoutSizes(again), "not the tree that was read came back");
    // The sizes in the first tree are those of the writing by now.
    requireSame(printed(movie), printed(again), "not the tree that was written came back");
    return 0;
}
