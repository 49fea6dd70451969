// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_minf.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

std::unique_ptr<MediaInformationAtom> MediaInformationAtom::Clone() const
{
    return std::make_unique<MediaInformationAtom>(*this);
}

MovAtom::Error MediaInformationAtom::GetSampleCount(uint32_t *count) const
{
    const SampleTableAtom *table = GetSampleTable();
    if (!table || !count)
        return ERROR_INVALID_RET_VAL;
    *count = table->GetSampleCount();
    return ERROR_OKAY;
}

MovAtom::Error MediaInformationAtom::GetSampleInfo(uint32_t index, SampleInfo *info) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->GetSampleInfo(index, info) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetSampleSize(uint32_t index, uint32_t *bytes) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->sampleSizes.GetSampleSize(index, bytes, nullptr) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetSampleTime(uint32_t index, uint64_t *time,
                                                   uint32_t *duration) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->GetSampleTime(index, time, duration) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetDisplayTime(uint32_t index, int64_t *time) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->GetDisplayTime(index, time) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetSampleIndexForTime(uint64_t time, uint32_t *index) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->GetSampleIndexForTime(time, index) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetSamplePosition(uint32_t index, uint64_t *position) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->GetSamplePosition(index, position) : ERROR_INVALID_RET_VAL;
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

MovAtom::Error MediaInformationAtom::AddSample(uint32_t bytes)
{
    SampleTableAtom *table = GetSampleTable();
    return table ? table->sampleSizes.AddSample(bytes) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::AddSampleTime(uint32_t count, uint32_t duration)
{
    SampleTableAtom *table = GetSampleTable();
    return table ? table->timeToSample.Ensure().AddEntry(count, duration) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::AddCompositionOffset(uint32_t count, int32_t delta)
{
    SampleTableAtom *table = GetSampleTable();
    return table ? table->compositionOffsets.Ensure().AddEntry(count, delta)
                 : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::AddSyncSample(uint32_t number)
{
    SampleTableAtom *table = GetSampleTable();
    return table ? table->syncSamples.Ensure().AddSample(number) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::AddSampleDependency(uint8_t dependency)
{
    SampleTableAtom *table = GetSampleTable();
    if (!table)
        return ERROR_INVALID_RET_VAL;
    table->sampleDependencies.Ensure().AddSample(dependency);
    return ERROR_OKAY;
}

MovAtom::Error MediaInformationAtom::AddChunk(uint64_t position, uint32_t sampleCount,
                                              uint32_t sampleDescriptionId)
{
    SampleTableAtom *table = GetSampleTable();
    if (!table)
        return ERROR_INVALID_RET_VAL;
    const Error error = table->chunkOffsets.AddChunk(position);
    if (error != ERROR_OKAY)
        return error;
    return table->sampleToChunk.AddEntry(static_cast<uint32_t>(table->chunkOffsets.offsets.size()),
                                         sampleCount, sampleDescriptionId);
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
    SampleTableAtom *table = GetSampleTable();
    if (!table)
        return ERROR_INVALID_RET_VAL;
    table->handlerType = handler;
    table->sampleDescriptions.mediaType = handler;
    return ERROR_OKAY;
}

MovAtom::Error MediaInformationAtom::GetFrameSize(uint32_t *width, uint32_t *height) const
{
    const SampleDescriptionAtom *descriptions = GetSampleDescriptions();
    return descriptions ? descriptions->GetFrameSize(width, height) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::GetDurationRange(uint32_t *shortest, uint32_t *longest) const
{
    const SampleTableAtom *table = GetSampleTable();
    return table ? table->GetDurationRange(shortest, longest) : ERROR_INVALID_RET_VAL;
}

MovAtom::Error MediaInformationAtom::CreateSampleTable()
{
    return ERROR_INVALID_OP;
}

template <class Header> MovAtom::Error KindOfMediaInformationAtom<Header>::CreateSampleTable()
{
    header = std::make_unique<Header>();
    dataHandler = std::make_unique<HandlerReferenceAtom>(
        HandlerReferenceAtom::kDataHandler, HandlerReferenceAtom::kAliasSubtype, std::string());
    DataReference self;
    self.type = HandlerReferenceAtom::kAliasSubtype;
    self.flags = {0, 0, 1}; // the media data lie in this file
    dataInformation.Ensure().dataReference.Ensure().entries = {self};
    sampleTable = std::make_unique<SampleTableAtom>();
    return SetHandlerType(handlerType);
}

template <class Header> MovAtom::Error KindOfMediaInformationAtom<Header>::Read(FileBuffer &buffer)
{
    return Read(buffer, kType);
}

template <class Header>
MovAtom::Error KindOfMediaInformationAtom<Header>::Read(FileBuffer &buffer, uint32_t expectedType)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, expectedType));
    const ChildRange children(scope, size);
    MOV_READ(scope, ReadOptionalChild(children, &header));
    MOV_READ(scope, ReadOptionalChild(children, &dataHandler));
    MOV_READ(scope, ReadOptionalChild(children, &dataInformation));
    sampleTable.reset();
    if (children.Find(SampleTableAtom::kType)) {
        sampleTable.Ensure().handlerType = handlerType;
        MOV_READ(scope, sampleTable->Read(buffer));
    }
    return scope.Finish(size);
}

template <class Header> MovAtom::Error KindOfMediaInformationAtom<Header>::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteChild(buffer, header));
    MOV_WRITE(WriteChild(buffer, dataHandler));
    MOV_WRITE(WriteChild(buffer, dataInformation));
    return WriteChild(buffer, sampleTable);
}

template <class Header>
void KindOfMediaInformationAtom<Header>::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, Name());
    MovAtom::PrintToString(out, block.Depth());
    block.Child(header);
    block.Child(dataHandler);
    block.Child(dataInformation);
    block.Child(sampleTable);
}

template <class Header> uint64_t KindOfMediaInformationAtom<Header>::GetSize() const
{
    return MovAtom::GetSize() + SizeOfChild(header) + SizeOfChild(dataHandler)
        + SizeOfChild(dataInformation) + SizeOfChild(sampleTable);
}

template class KindOfMediaInformationAtom<VideoMediaInformationHeaderAtom>;
template class KindOfMediaInformationAtom<SoundMediaInformationHeaderAtom>;
template class KindOfMediaInformationAtom<BaseMediaInformationHeaderAtom>;

std::unique_ptr<MediaInformationAtom> VideoMediaInformationAtom::Clone() const
{
    return std::make_unique<VideoMediaInformationAtom>(*this);
}

std::unique_ptr<MediaInformationAtom> SoundMediaInformationAtom::Clone() const
{
    return std::make_unique<SoundMediaInformationAtom>(*this);
}

std::unique_ptr<MediaInformationAtom> BaseMediaInformationAtom::Clone() const
{
    return std::make_unique<BaseMediaInformationAtom>(*this);
}

std::unique_ptr<MediaInformationAtom> MakeMediaInformation(uint32_t handlerType)
{
    std::unique_ptr<MediaInformationAtom> atom;
    switch (handlerType) {
    case FourCC("vide"):
        atom = std::make_unique<VideoMediaInformationAtom>();
        break;
    case FourCC("soun"):
        atom = std::make_unique<SoundMediaInformationAtom>();
        break;
    case FourCC("tmcd"):
    case FourCC("text"):
    case FourCC("meta"):
        atom = std::make_unique<BaseMediaInformationAtom>();
        break;
    default:
        return nullptr;
    }
    atom->handlerType = handlerType;
    return atom;
}

} // namespace Tavro::MovParserLib
