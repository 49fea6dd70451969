// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stbl.h"

#include "movparser/src/atom_printer.h"

#include <algorithm>

namespace Tavro::MovParserLib {

namespace {

// A table that is a member and not a pointer: an absent one is empty.
template <class T> MovAtom::Error ReadMember(const ChildRange &range, T *table)
{
    *table = T();
    return range.Find(T::kType) ? table->Read(range.Buffer()) : MovAtom::ERROR_OKAY;
}

} // namespace

MovAtom::Error SampleTableAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    const ChildRange children(scope, size);
    sampleDescriptions = SampleDescriptionAtom();
    sampleDescriptions.mediaType = handlerType;
    if (children.Find(SampleDescriptionAtom::kType))
        MOV_READ(scope, sampleDescriptions.Read(buffer));
    MOV_READ(scope, ReadMember(children, &sampleSizes));
    MOV_READ(scope, ReadMember(children, &sampleToChunk));
    chunkOffsets = ChunkOffsetAtom();
    if (!children.Find(ChunkOffsetAtom::kType) && !children.Find(ChunkOffsetAtom::kWideType))
        return scope.Fail();
    MOV_READ(scope, chunkOffsets.Read(buffer));
    MOV_READ(scope, ReadOptionalChild(children, &timeToSample));
    MOV_READ(scope, ReadOptionalChild(children, &syncSamples));
    MOV_READ(scope, ReadOptionalChild(children, &compositionOffsets));
    MOV_READ(scope, ReadOptionalChild(children, &sampleDependencies));
    return scope.Finish(size);
}

MovAtom::Error SampleTableAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(sampleDescriptions.Write(buffer));
    MOV_WRITE(WriteChild(buffer, timeToSample));
    MOV_WRITE(WriteChild(buffer, syncSamples));
    MOV_WRITE(WriteChild(buffer, compositionOffsets));
    MOV_WRITE(WriteChild(buffer, sampleDependencies));
    MOV_WRITE(sampleToChunk.Write(buffer));
    MOV_WRITE(sampleSizes.Write(buffer));
    return chunkOffsets.Write(buffer);
}

void SampleTableAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SampleTableAtom");
    MovAtom::PrintToString(out, block.Depth());
    sampleDescriptions.PrintToString(out, block.Depth());
    block.Child(timeToSample);
    block.Child(syncSamples);
    block.Child(compositionOffsets);
    block.Child(sampleDependencies);
    sampleToChunk.PrintToString(out, block.Depth());
    sampleSizes.PrintToString(out, block.Depth());
    chunkOffsets.PrintToString(out, block.Depth());
}

uint64_t SampleTableAtom::GetSize() const
{
    return MovAtom::GetSize() + sampleDescriptions.GetSize() + SizeOfChild(timeToSample)
        + SizeOfChild(syncSamples) + SizeOfChild(compositionOffsets)
        + SizeOfChild(sampleDependencies) + sampleToChunk.GetSize() + sampleSizes.GetSize()
        + chunkOffsets.GetSize();
}

MovAtom::Error SampleTableAtom::GetSampleInfo(uint32_t index, SampleInfo *info) const
{
    if (!info || index >= GetSampleCount())
        return ERROR_INVALID_ARG;
    int64_t time = 0;
    uint64_t decodingTime = 0;
    uint32_t duration = 0;
    Error error = sampleSizes.GetSampleSize(index, &info->size, nullptr);
    if (error == ERROR_OKAY)
        error = GetSamplePosition(index, &info->position);
    if (error == ERROR_OKAY)
        error = GetSampleTime(index, &decodingTime, &duration);
    if (error == ERROR_OKAY)
        error = GetDisplayTime(index, &time);
    if (error != ERROR_OKAY)
        return error;
    info->time = static_cast<uint64_t>(std::max<int64_t>(time, 0));
    info->duration = duration;
    info->isKey = IsSyncSample(index);
    return ERROR_OKAY;
}

MovAtom::Error SampleTableAtom::GetSamplePosition(uint32_t index, uint64_t *position) const
{
    if (!position)
        return ERROR_INVALID_ARG;
    SampleChunk chunk;
    uint64_t chunkPosition = 0;
    Error error = sampleToChunk.GetChunk(index, &chunk);
    if (error == ERROR_OKAY)
        error = chunkOffsets.GetOffset(chunk.number, &chunkPosition);
    if (error != ERROR_OKAY)
        return error;
    if (sampleSizes.uniformSize != 0) {
        *position = chunkPosition + uint64_t(sampleSizes.uniformSize) * chunk.sample;
        return ERROR_OKAY;
    }
    const uint32_t first = index - chunk.sample;
    if (m_cursor.sizes != sampleSizes.sizes.Version() || m_cursor.first != first
        || m_cursor.chunkPosition != chunkPosition || m_cursor.index > index)
        m_cursor = {sampleSizes.sizes.Version(), first, chunkPosition, first, chunkPosition};
    while (m_cursor.index < index) {
        uint32_t bytes = 0;
        error = sampleSizes.GetSampleSize(m_cursor.index, &bytes, nullptr);
        if (error != ERROR_OKAY)
            return error;
        m_cursor.position += bytes;
        ++m_cursor.index;
    }
    *position = m_cursor.position;
    return ERROR_OKAY;
}

MovAtom::Error SampleTableAtom::GetSampleTime(uint32_t index, uint64_t *time,
                                              uint32_t *duration) const
{
    return timeToSample ? timeToSample->GetSampleTime(index, time, duration) : ERROR_ATOM_NOT_FOUND;
}

MovAtom::Error SampleTableAtom::GetDisplayTime(uint32_t index, int64_t *time) const
{
    uint64_t decodingTime = 0;
    uint32_t duration = 0;
    int32_t delta = 0;
    if (!time)
        return ERROR_INVALID_ARG;
    Error error = GetSampleTime(index, &decodingTime, &duration);
    if (error == ERROR_OKAY && compositionOffsets)
        error = compositionOffsets->GetSampleDelta(index, &delta);
    if (error != ERROR_OKAY)
        return error;
    // Durations in a hostile file add up to more than a signed time can say.
    if (decodingTime > static_cast<uint64_t>(INT64_MAX - std::max(delta, 0)))
        return ERROR_MALFORMED_ATOM;
    *time = static_cast<int64_t>(decodingTime) + delta;
    return ERROR_OKAY;
}

MovAtom::Error SampleTableAtom::GetSampleIndexForTime(uint64_t time, uint32_t *index) const
{
    return timeToSample ? timeToSample->GetSampleIndex(time, index) : ERROR_ATOM_NOT_FOUND;
}

MovAtom::Error SampleTableAtom::GetDurationRange(uint32_t *shortest, uint32_t *longest) const
{
    return timeToSample ? timeToSample->GetDurationRange(shortest, longest) : ERROR_ATOM_NOT_FOUND;
}

bool SampleTableAtom::IsSyncSample(uint32_t index) const
{
    return !syncSamples || (index < UINT32_MAX && syncSamples->Contains(index + 1));
}

} // namespace Tavro::MovParserLib
