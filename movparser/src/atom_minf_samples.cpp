// SPDX-License-Identifier: GPL-3.0-or-later
// What all kinds of media share of their table of operations: each one goes to the `stbl`, or to
// its descriptions, when there is one.
#include "movparser/src/atom_io.h"
#include "movparser/src/atom_minf.h"

namespace Tavro::MovParserLib {

namespace {

/// Calls an operation of what may be null: `Table` is the `stbl` or its descriptions.
template <class Table, class Class, class... Parameter, class... Argument>
MovAtom::Error Ask(const Table *table, MovAtom::Error (Class::*question)(Parameter...) const,
                   Argument... argument)
{
    return table ? (table->*question)(argument...) : MovAtom::ERROR_INVALID_RET_VAL;
}

/// Calls `change(table)`, which may take memory, unless there is no table.
template <class Table, class Change> MovAtom::Error Alter(Table *table, Change &&change)
{
    return table ? OrNoMemory([&] { return change(*table); }) : MovAtom::ERROR_INVALID_RET_VAL;
}

} // namespace

MovAtom::Error MediaInformationAtom::GetSampleCount(uint32_t *count) const
{
    const SampleTableAtom *table = GetSampleTable();
    if (!table || !count)
        return ERROR_INVALID_RET_VAL;
    *count = table->GetSampleCount();
    return ERROR_OKAY;
}

MovAtom::Error MediaInformationAtom::GetSampleSize(uint32_t index, uint32_t *bytes) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->sampleSizes.GetSampleSize(index, bytes, nullptr) : ERROR_INVALID_RET_VAL;
}

bool MediaInformationAtom::IsSyncSample(uint32_t index) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table && table->IsSyncSample(index);
}

bool MediaInformationAtom::HasSamples() const
{
    const SampleTableAtom *table = GetSampleTable();
    return table && table->GetSampleCount() > 0;
}

MovAtom::Error MediaInformationAtom::SetHandlerType(uint32_t handler)
{
    handlerType = handler;
    return Alter(GetSampleTable(), [handler](SampleTableAtom &table) {
        table.handlerType = handler;
        table.sampleDescriptions.mediaType = handler;
        return ERROR_OKAY;
    });
}

MovAtom::Error MediaInformationAtom::CreateSampleTable()
{
    return ERROR_INVALID_OP;
}

MovAtom::Error MediaInformationAtom::GetSampleInfo(uint32_t index, SampleInfo *info) const
{
    return Ask(GetSampleTable(), &SampleTableAtom::GetSampleInfo, index, info);
}

MovAtom::Error MediaInformationAtom::GetSampleTime(uint32_t index, uint64_t *time,
                                                   uint32_t *duration) const
{
    return Ask(GetSampleTable(), &SampleTableAtom::GetSampleTime, index, time, duration);
}

MovAtom::Error MediaInformationAtom::GetDisplayTime(uint32_t index, int64_t *time) const
{
    return Ask(GetSampleTable(), &SampleTableAtom::GetDisplayTime, index, time);
}

MovAtom::Error MediaInformationAtom::GetSampleIndexForTime(uint64_t time, uint32_t *index) const
{
    return Ask(GetSampleTable(), &SampleTableAtom::GetSampleIndexForTime, time, index);
}

MovAtom::Error MediaInformationAtom::GetSamplePosition(uint32_t index, uint64_t *position) const
{
    return Ask(GetSampleTable(), &SampleTableAtom::GetSamplePosition, index, position);
}

MovAtom::Error MediaInformationAtom::GetDurationRange(uint32_t *shortest, uint32_t *longest) const
{
    return Ask(GetSampleTable(), &SampleTableAtom::GetDurationRange, shortest, longest);
}

MovAtom::Error MediaInformationAtom::GetCodec(uint32_t *format) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetCodec, format);
}

MovAtom::Error MediaInformationAtom::GetPixelAspect(const PixelAspectAtom **atom) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetPixelAspect, atom);
}

MovAtom::Error MediaInformationAtom::GetColorParameters(const ColorAtom **atom) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetColorParameters, atom);
}

MovAtom::Error MediaInformationAtom::GetFields(const FieldsAtom **atom) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetFields, atom);
}

MovAtom::Error MediaInformationAtom::GetAvcConfiguration(const AVCCAtom **atom) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetAvcConfiguration, atom);
}

MovAtom::Error MediaInformationAtom::GetHevcConfiguration(const HVCCAtom **atom) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetHevcConfiguration, atom);
}

MovAtom::Error MediaInformationAtom::GetStereoMode(uint32_t *mode) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetStereoMode, mode);
}

MovAtom::Error MediaInformationAtom::GetProjection(uint32_t *projection) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetProjection, projection);
}

MovAtom::Error MediaInformationAtom::GetInitialPose(float *yaw, float *pitch, float *roll) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetInitialPose, yaw, pitch, roll);
}

MovAtom::Error MediaInformationAtom::GetWritingTool(std::string *tool) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetWritingTool, tool);
}

MovAtom::Error MediaInformationAtom::GetSoundDescription(const SoundSampleDescription **sound) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetSoundDescription, sound);
}

MovAtom::Error MediaInformationAtom::GetChannelCount(uint32_t *channels) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetChannelCount, channels);
}

MovAtom::Error MediaInformationAtom::GetSampleBits(uint32_t *bits) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetSampleBits, bits);
}

MovAtom::Error MediaInformationAtom::GetSampleRate(double *rate) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetSampleRate, rate);
}

MovAtom::Error MediaInformationAtom::GetCompressionId(int32_t *id) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetCompressionId, id);
}

MovAtom::Error MediaInformationAtom::GetBytesPerPacket(uint32_t *bytes) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetBytesPerPacket, bytes);
}

MovAtom::Error MediaInformationAtom::GetEsds(const EsdsAtom **atom) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetEsds, atom);
}

MovAtom::Error
MediaInformationAtom::GetTimeCodeDescription(const TimeCodeSampleDescription **timeCode) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetTimeCodeDescription, timeCode);
}

MovAtom::Error MediaInformationAtom::GetFrameSize(uint32_t *width, uint32_t *height) const
{
    return Ask(GetSampleDescriptions(), &SampleDescriptionAtom::GetFrameSize, width, height);
}

MovAtom::Error MediaInformationAtom::AddVideoDescription(uint32_t format, uint16_t width,
                                                         uint16_t height)
{
    return Alter(GetSampleDescriptions(), [=](SampleDescriptionAtom &descriptions) {
        return descriptions.AddVideoDescription(format, width, height);
    });
}

MovAtom::Error MediaInformationAtom::AddSoundDescription(uint32_t format, uint32_t channels,
                                                         double rate)
{
    return Alter(GetSampleDescriptions(), [=](SampleDescriptionAtom &descriptions) {
        return descriptions.AddSoundDescription(format, channels, rate);
    });
}

MovAtom::Error MediaInformationAtom::GetChunk(uint32_t index, SampleChunk *chunk) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->sampleToChunk.GetChunk(index, chunk) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetChunkOffset(uint32_t chunkNumber, uint64_t *position) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->chunkOffsets.GetOffset(chunkNumber, position) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetChunkCount(uint32_t *count) const
{
    const SampleTableAtom *table = GetSampleTable();
    if (!table || !count)
        return ERROR_INVALID_RET_VAL;
    *count = static_cast<uint32_t>(table->chunkOffsets.offsets.size());
    return ERROR_OKAY;
}

MovAtom::Error MediaInformationAtom::AddSample(uint32_t bytes)
{
    return Alter(GetSampleTable(),
                 [=](SampleTableAtom &table) { return table.sampleSizes.AddSample(bytes); });
}

MovAtom::Error MediaInformationAtom::AddSampleTime(uint32_t count, uint32_t duration)
{
    return Alter(GetSampleTable(), [=](SampleTableAtom &table) {
        return table.timeToSample.Ensure().AddEntry(count, duration);
    });
}

MovAtom::Error MediaInformationAtom::AddCompositionOffset(uint32_t count, int32_t delta)
{
    return Alter(GetSampleTable(), [=](SampleTableAtom &table) {
        return table.compositionOffsets.Ensure().AddEntry(count, delta);
    });
}

MovAtom::Error MediaInformationAtom::AddSyncSample(uint32_t number)
{
    return Alter(GetSampleTable(), [=](SampleTableAtom &table) {
        return table.syncSamples.Ensure().AddSample(number);
    });
}

MovAtom::Error MediaInformationAtom::AddSampleDependency(uint8_t dependency)
{
    return Alter(GetSampleTable(), [=](SampleTableAtom &table) {
        return table.sampleDependencies.Ensure().AddSample(dependency);
    });
}

MovAtom::Error MediaInformationAtom::AddChunk(uint64_t position, uint32_t sampleCount,
                                              uint32_t sampleDescriptionId)
{
    return Alter(GetSampleTable(), [=](SampleTableAtom &table) {
        const Error error = table.chunkOffsets.AddChunk(position);
        const auto number = static_cast<uint32_t>(table.chunkOffsets.offsets.size());
        return error != ERROR_OKAY
            ? error
            : table.sampleToChunk.AddEntry(number, sampleCount, sampleDescriptionId);
    });
}

std::unique_ptr<MediaInformationAtom> MediaInformationAtom::Clone() const
{
    return std::make_unique<MediaInformationAtom>(*this);
}

} // namespace Tavro::MovParserLib
