// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stsd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/tavro_metadata_sample_description.h"
#include "movparser/src/text_sample_description.h"
#include "movparser/src/time_code_sample_description.h"
#include "movparser/src/video_sample_description.h"

namespace Tavro::MovParserLib {

namespace {

constexpr uint32_t kVideo = FourCC("vide");
constexpr uint32_t kSound = FourCC("soun");
constexpr uint32_t kTimeCode = FourCC("tmcd");
constexpr uint32_t kText = FourCC("text");
constexpr uint32_t kMetadata = FourCC("meta");

using Descriptions = std::vector<AtomPtr<SampleDescription>>;

template <class T> MovAtom::Error AppendDescription(FileBuffer &buffer, Descriptions *entries)
{
    const MovAtom::Error error = MakeRoom(buffer, sizeof(T) + sizeof(Descriptions::value_type),
                                          [&] { entries->emplace_back(std::make_unique<T>()); });
    return error == MovAtom::ERROR_OKAY ? entries->back()->Read(buffer) : error;
}

MovAtom::Error ReadDescription(FileBuffer &buffer, uint32_t mediaType, Descriptions *entries)
{
    switch (mediaType) {
    case kVideo:
        return AppendDescription<VideoSampleDescription>(buffer, entries);
    case kSound:
        return AppendDescription<SoundSampleDescription>(buffer, entries);
    case kTimeCode:
        return AppendDescription<TimeCodeSampleDescription>(buffer, entries);
    case kText:
        return AppendDescription<TextSampleDescription>(buffer, entries);
    case kMetadata:
        return AppendDescription<TavroMetadataSampleDescription>(buffer, entries);
    default:
        return MovAtom::ERROR_ATOM_READ_FAILED;
    }
}

} // namespace

MovAtom::Error SampleDescriptionAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    entries.clear();
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    // Entries may overlap, but each begins with its own fields: no buffer has more than this.
    if (count > buffer.BytesLeft() / SampleDescription().GetSize())
        return scope.Fail();
    for (uint32_t i = 0; i < count; ++i) {
        const Error error = ReadDescription(buffer, mediaType, &entries);
        if (error != ERROR_OKAY) {
            entries.clear(); // the last one may be half read
            return scope.Fail();
        }
    }
    return scope.Finish(size);
}

MovAtom::Error SampleDescriptionAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(entries.size())));
    for (const AtomPtr<SampleDescription> &entry : entries)
        MOV_WRITE(entry->Write(buffer));
    return ERROR_OKAY;
}

void SampleDescriptionAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SampleDescriptionAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "NumberOfEntries: %zu", entries.size());
    PrintLine(out, block.Depth(), "SampleDescriptionTable: ");
    for (const AtomPtr<SampleDescription> &entry : entries)
        block.Child(entry);
}

uint64_t SampleDescriptionAtom::GetSize() const
{
    uint64_t bytes = MovFullAtom::GetSize() + sizeof(uint32_t);
    for (const AtomPtr<SampleDescription> &entry : entries)
        bytes += entry->GetSize();
    return bytes;
}

SampleDescription *SampleDescriptionAtom::First(uint32_t kind) const
{
    return mediaType == kind && !entries.empty() ? entries.front().get() : nullptr;
}

VideoSampleDescription *SampleDescriptionAtom::Video() const
{
    return dynamic_cast<VideoSampleDescription *>(First(kVideo));
}

SoundSampleDescription *SampleDescriptionAtom::Sound() const
{
    return dynamic_cast<SoundSampleDescription *>(First(kSound));
}

TimeCodeSampleDescription *SampleDescriptionAtom::TimeCode() const
{
    return dynamic_cast<TimeCodeSampleDescription *>(First(kTimeCode));
}

MovAtom::Error SampleDescriptionAtom::AddVideoDescription(uint32_t format, uint16_t width,
                                                          uint16_t height)
{
    if (!CanAdd(kVideo))
        return ERROR_INVALID_OP;
    if (width == 0 || height == 0)
        return ERROR_INVALID_ARG;
    return OrNoMemory([&] {
        auto description = std::make_unique<VideoSampleDescription>();
        description->data_format = format;
        description->width = width;
        description->height = height;
        entries.emplace_back(std::move(description));
        return ERROR_OKAY;
    });
}

MovAtom::Error SampleDescriptionAtom::AddSoundDescription(uint32_t format, uint32_t channels,
                                                          double rate)
{
    if (!CanAdd(kSound))
        return ERROR_INVALID_OP;
    return OrNoMemory([&] {
        auto description = std::make_unique<SoundSampleDescription>();
        const Error error = description->SetFormat(format, channels, rate);
        if (error == ERROR_OKAY)
            entries.emplace_back(std::move(description));
        return error;
    });
}

} // namespace Tavro::MovParserLib
