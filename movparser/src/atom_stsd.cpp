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

std::unique_ptr<SampleDescription> MakeDescription(uint32_t mediaType)
{
    switch (mediaType) {
    case kVideo:
        return std::make_unique<VideoSampleDescription>();
    case kSound:
        return std::make_unique<SoundSampleDescription>();
    case kTimeCode:
        return std::make_unique<TimeCodeSampleDescription>();
    case kText:
        return std::make_unique<TextSampleDescription>();
    case kMetadata:
        return std::make_unique<TavroMetadataSampleDescription>();
    default:
        return nullptr;
    }
}

template <class Configuration>
MovAtom::Error GetConfiguration(const VideoSampleDescription *description,
                                const AtomPtr<Configuration> VideoSampleDescription::*member,
                                const Configuration **configuration)
{
    if (!configuration)
        return MovAtom::ERROR_INVALID_ARG;
    if (!description)
        return MovAtom::ERROR_INVALID_RET_VAL;
    *configuration = (description->*member).get();
    return *configuration ? MovAtom::ERROR_OKAY : MovAtom::ERROR_ATOM_NOT_FOUND;
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
        std::unique_ptr<SampleDescription> entry = MakeDescription(mediaType);
        if (!entry)
            return scope.Fail();
        MOV_READ(scope, entry->Read(buffer));
        entries.emplace_back(std::move(entry));
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

MovAtom::Error SampleDescriptionAtom::GetFrameSize(uint32_t *width, uint32_t *height) const
{
    const VideoSampleDescription *description = Video();
    if (!width || !height)
        return ERROR_INVALID_ARG;
    if (!description)
        return ERROR_INVALID_RET_VAL;
    *width = description->width;
    *height = description->height;
    return ERROR_OKAY;
}

MovAtom::Error SampleDescriptionAtom::GetCodec(uint32_t *format) const
{
    if (!format)
        return ERROR_INVALID_ARG;
    if (entries.empty())
        return ERROR_INVALID_RET_VAL;
    *format = entries.front()->data_format;
    return ERROR_OKAY;
}

MovAtom::Error SampleDescriptionAtom::GetAvcConfiguration(const AVCCAtom **configuration) const
{
    return GetConfiguration(Video(), &VideoSampleDescription::avcc, configuration);
}

MovAtom::Error SampleDescriptionAtom::GetHevcConfiguration(const HVCCAtom **configuration) const
{
    return GetConfiguration(Video(), &VideoSampleDescription::hvcc, configuration);
}

MovAtom::Error SampleDescriptionAtom::AddVideoDescription(uint32_t format, uint16_t width,
                                                          uint16_t height)
{
    if (!CanAdd(kVideo))
        return ERROR_INVALID_OP;
    if (width == 0 || height == 0)
        return ERROR_INVALID_ARG;
    auto description = std::make_unique<VideoSampleDescription>();
    description->data_format = format;
    description->width = width;
    description->height = height;
    entries.emplace_back(std::move(description));
    return ERROR_OKAY;
}

MovAtom::Error SampleDescriptionAtom::AddSoundDescription(uint32_t format, uint32_t channels,
                                                          double rate)
{
    if (!CanAdd(kSound))
        return ERROR_INVALID_OP;
    auto description = std::make_unique<SoundSampleDescription>();
    const Error error = description->SetFormat(format, channels, rate);
    if (error == ERROR_OKAY)
        entries.emplace_back(std::move(description));
    return error;
}

} // namespace Tavro::MovParserLib
