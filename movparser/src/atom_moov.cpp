// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_moov.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

namespace {

// Atoms that overlap have the same bytes read over and over. A tree without overlap has each
// preamble read about ten times, once for each search among its siblings, and everything else
// once; more than this bound only a hostile file needs.
constexpr uint64_t kReadsOfEachByte = 32;

// What is kept of a movie takes about its bytes again, twice that for chunk offsets, and some more
// for the objects: room for thousands of tracks.
constexpr uint64_t kMemoryOfEachByte = 2;
constexpr uint64_t kMemoryOfObjects = 16U << 20;

uint64_t Times(uint64_t bytes, uint64_t factor)
{
    return bytes < UINT64_MAX / 64 ? bytes * factor : UINT64_MAX / 2;
}

} // namespace

MovAtom::Error MovieAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    header = MovieHeaderAtom();
    tracks.clear();
    unparsed.clear();
    user_data.reset();
    buffer.SetReadBudget(Times(buffer.BytesLeft(), kReadsOfEachByte));
    buffer.SetMemoryBudget(Times(buffer.BytesLeft(), kMemoryOfEachByte) + kMemoryOfObjects);
    const Error error = ReadMovie(scope);
    buffer.SetReadBudget(UINT64_MAX);
    buffer.SetMemoryBudget(UINT64_MAX);
    return error;
}

MovAtom::Error MovieAtom::ReadMovie(const ReadScope &scope)
{
    FileBuffer &buffer = scope.Buffer();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 switch (child) {
                 case TrackAtom::kType: {
                     TrackAtom track;
                     const Error error = track.Read(buffer);
                     return error != ERROR_OKAY ? error : MakeRoom(buffer, sizeof track, [&] {
                         tracks.push_back(std::move(track));
                     });
                 }
                 case MovieHeaderAtom::kType:
                     return header.Read(buffer);
                 case UserDataAtom::kType:
                     return ReadChild(buffer, &user_data); // of several the last one counts
                 default:
                     return ReadUnparsed(buffer, &unparsed);
                 }
             }));
    // Unlike other failures this one leaves the cursor where it is: all children were read.
    return tracks.empty() ? ERROR_ATOM_READ_FAILED : scope.Finish(size);
}

MovAtom::Error MovieAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(header.Write(buffer));
    MOV_WRITE(WriteChild(buffer, user_data));
    for (TrackAtom &track : tracks)
        MOV_WRITE(track.Write(buffer));
    return WriteUnparsed(buffer, &unparsed);
}

void MovieAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "MovieAtom");
    MovAtom::PrintToString(out, block.Depth());
    header.PrintToString(out, block.Depth());
    block.Child(user_data);
    for (const TrackAtom &track : tracks)
        track.PrintToString(out, block.Depth());
    PrintUnparsed(out, block.Depth(), unparsed);
}

uint64_t MovieAtom::GetSize() const
{
    uint64_t bytes = MovAtom::GetSize() + header.GetSize() + SizeOfChild(user_data);
    for (const TrackAtom &track : tracks)
        bytes += track.GetSize();
    return bytes + SizeOfUnparsed(unparsed);
}

const TrackAtom *MovieAtom::FindTrack(uint32_t handlerType) const
{
    return FindTrack(handlerType, 0);
}

TrackAtom *MovieAtom::FindTrack(uint32_t handlerType)
{
    for (TrackAtom &track : tracks) {
        if (track.HasHandlerType(handlerType))
            return &track;
    }
    return nullptr;
}

const TrackAtom *MovieAtom::FindTrack(uint32_t handlerType, uint32_t n) const
{
    for (const TrackAtom &track : tracks) {
        if (track.HasHandlerType(handlerType) && n-- == 0)
            return &track;
    }
    return nullptr;
}

const TrackAtom *MovieAtom::FindTrackById(uint32_t trackId) const
{
    for (const TrackAtom &track : tracks) {
        if (track.header.trackId == trackId)
            return &track;
    }
    return nullptr;
}

} // namespace Tavro::MovParserLib
