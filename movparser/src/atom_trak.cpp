// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_trak.h"

#include "movparser/src/atom_printer.h"

#include <cmath>

namespace Tavro::MovParserLib {

MovAtom::Error TrackAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    const ChildRange children(scope, size);
    if (!children.Find(TrackHeaderAtom::kType))
        return scope.Fail();
    MOV_READ(scope, header.Read(buffer));
    if (!children.Find(MediaAtom::kType))
        return scope.Fail();
    MOV_READ(scope, media.Read(buffer));
    MOV_READ(scope, ReadOptionalChild(children, &edits));
    MOV_READ(scope, ReadOptionalChild(children, &references));
    MOV_READ(scope, ReadOptionalChild(children, &spherical));
    return scope.Finish(size);
}

MovAtom::Error TrackAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(header.Write(buffer));
    MOV_WRITE(WriteChild(buffer, edits));
    MOV_WRITE(media.Write(buffer));
    MOV_WRITE(WriteChild(buffer, references));
    return WriteChild(buffer, spherical);
}

void TrackAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TrackAtom");
    MovAtom::PrintToString(out, block.Depth());
    header.PrintToString(out, block.Depth());
    block.Child(edits);
    media.PrintToString(out, block.Depth());
    block.Child(references);
    block.Child(spherical);
}

uint64_t TrackAtom::GetSize() const
{
    return MovAtom::GetSize() + header.GetSize() + SizeOfChild(edits) + media.GetSize()
        + SizeOfChild(references) + SizeOfChild(spherical);
}

bool TrackAtom::HasHandlerType(uint32_t handlerType) const
{
    uint32_t own = 0;
    return GetHandlerType(&own) == ERROR_OKAY && own == handlerType;
}

MovAtom::Error TrackAtom::GetFrameDuration(uint64_t *timeScale, uint64_t *frameDuration) const
{
    uint32_t samples = 0;
    const Error error = Information().GetSampleCount(&samples);
    if (error != ERROR_OKAY)
        return error;
    *timeScale = GetTimeScale();
    *frameDuration = 0;
    if (samples == 0) {
        // A movie in fragments: its first edit skips one frame as a rule.
        if (edits && edits->editList && !edits->editList->entries.empty()) {
            const int32_t mediaTime = edits->editList->entries.front().mediaTime;
            *frameDuration = mediaTime >= 0 ? static_cast<uint64_t>(mediaTime) : 0;
        }
        return ERROR_OKAY;
    }
    const double ticks = std::ceil(static_cast<double>(GetDuration()) / samples);
    // A frame in thousandths of a unit, as long as that fits 32 bits. The time scale need not:
    // 64 bits hold a thousand times its largest value.
    if (ticks * 1000 > 4294967295.0) {
        *frameDuration = static_cast<uint64_t>(ticks);
    } else {
        *frameDuration = static_cast<uint64_t>(ticks * 1000);
        *timeScale *= 1000;
    }
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::SetDuration(uint32_t mediaDuration, uint32_t movieTimeScale,
                                      uint32_t rate)
{
    if (media.header.timeScale == 0)
        return ERROR_INVALID_ARG;
    media.header.duration = mediaDuration;
    header.duration =
        static_cast<uint32_t>(uint64_t(mediaDuration) * movieTimeScale / media.header.timeScale);
    return OrNoMemory([&] {
        return edits.Ensure().editList.Ensure().entries.push_back({header.duration, 0, rate})
            ? ERROR_OKAY
            : ERROR_MEM_ALLOC;
    });
}

} // namespace Tavro::MovParserLib
