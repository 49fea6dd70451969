// SPDX-License-Identifier: GPL-3.0-or-later
// What the first sample description answers.
#include "movparser/src/atom_io.h"
#include "movparser/src/atom_stsd.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/time_code_sample_description.h"
#include "movparser/src/video_sample_description.h"

namespace Tavro::MovParserLib {

namespace {

/// Hands out `found`, which may be null.
template <class T> MovAtom::Error Give(const T *found, MovAtom::Error missing, const T **out)
{
    if (!out)
        return MovAtom::ERROR_INVALID_ARG;
    *out = found;
    return found ? MovAtom::ERROR_OKAY : missing;
}

/// Hands out a child of a description that may be null.
template <class Description, class T>
MovAtom::Error GiveChild(const Description *description, const AtomPtr<T> Description::*member,
                         const T **out)
{
    return description ? Give<T>((description->*member).get(), MovAtom::ERROR_ATOM_NOT_FOUND, out)
                       : Give<T>(nullptr, MovAtom::ERROR_INVALID_RET_VAL, out);
}

/// Answers with `value(description)` of a description that may be null.
template <class Description, class T, class Value>
MovAtom::Error Answer(const Description *description, T *out, Value &&value)
{
    if (!out)
        return MovAtom::ERROR_INVALID_ARG;
    if (!description)
        return MovAtom::ERROR_INVALID_RET_VAL;
    *out = value(*description);
    return MovAtom::ERROR_OKAY;
}

} // namespace

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
    return Answer(entries.empty() ? nullptr : entries.front().get(), format,
                  [](const auto &description) { return description.data_format; });
}

MovAtom::Error SampleDescriptionAtom::GetPixelAspect(const PixelAspectAtom **atom) const
{
    return GiveChild(Video(), &VideoSampleDescription::pixelAspect, atom);
}

MovAtom::Error SampleDescriptionAtom::GetColorParameters(const ColorAtom **atom) const
{
    return GiveChild(Video(), &VideoSampleDescription::color, atom);
}

MovAtom::Error SampleDescriptionAtom::GetFields(const FieldsAtom **atom) const
{
    return GiveChild(Video(), &VideoSampleDescription::fields, atom);
}

MovAtom::Error SampleDescriptionAtom::GetAvcConfiguration(const AVCCAtom **atom) const
{
    return GiveChild(Video(), &VideoSampleDescription::avcc, atom);
}

MovAtom::Error SampleDescriptionAtom::GetHevcConfiguration(const HVCCAtom **atom) const
{
    return GiveChild(Video(), &VideoSampleDescription::hvcc, atom);
}

MovAtom::Error SampleDescriptionAtom::GetEsds(const EsdsAtom **atom) const
{
    return GiveChild(Sound(), &SoundSampleDescription::esds, atom);
}

MovAtom::Error SampleDescriptionAtom::GetStereoMode(uint32_t *mode) const
{
    return Answer(Video(), mode, [](const auto &video) {
        return video.stereo ? video.stereo->GetStereoMode() : 0;
    });
}

MovAtom::Error SampleDescriptionAtom::GetProjection(uint32_t *projection) const
{
    return Answer(Video(), projection, [](const auto &video) -> uint32_t {
        return video.spherical ? video.spherical->GetProjection() : kProjectionUnknown;
    });
}

MovAtom::Error SampleDescriptionAtom::GetInitialPose(float *yaw, float *pitch, float *roll) const
{
    const VideoSampleDescription *description = Video();
    if (!description)
        return ERROR_INVALID_RET_VAL;
    // A header as it is made stands in the middle.
    const sphericalProjectionHeaderAtom middle;
    const auto &header =
        description->spherical ? description->spherical->projection.header : middle;
    header.GetPose(yaw, pitch, roll);
    return ERROR_OKAY;
}

MovAtom::Error SampleDescriptionAtom::GetWritingTool(std::string *tool) const
{
    return OrNoMemory([&] {
        return Answer(Video(), tool, [tool](const auto &video) {
            return video.spherical ? video.spherical->GetMetadataSource() : *tool;
        });
    });
}

MovAtom::Error
SampleDescriptionAtom::GetSoundDescription(const SoundSampleDescription **sound) const
{
    return Give<SoundSampleDescription>(Sound(), ERROR_INVALID_RET_VAL, sound);
}

MovAtom::Error SampleDescriptionAtom::GetChannelCount(uint32_t *channels) const
{
    return Answer(Sound(), channels, [](const auto &sound) {
        return sound.version == 2 ? sound.channelCount : sound.numberOfChannels;
    });
}

MovAtom::Error SampleDescriptionAtom::GetSampleBits(uint32_t *bits) const
{
    return Answer(Sound(), bits, [](const auto &sound) {
        return sound.version == 2 ? sound.bitsPerChannel : sound.sampleSize;
    });
}

MovAtom::Error SampleDescriptionAtom::GetSampleRate(double *rate) const
{
    return Answer(Sound(), rate, [](const auto &sound) {
        return sound.version == 2 ? sound.audioSampleRate : sound.sampleRate / 65536.0;
    });
}

MovAtom::Error SampleDescriptionAtom::GetCompressionId(int32_t *id) const
{
    return Answer(Sound(), id, [](const auto &sound) { return sound.compressionId; });
}

MovAtom::Error SampleDescriptionAtom::GetBytesPerPacket(uint32_t *bytes) const
{
    return Answer(Sound(), bytes, [](const auto &sound) -> uint32_t {
        switch (sound.version) {
        case 1:
            return sound.bytesPerPacket;
        case 2:
            return sound.bytesPerAudioPacket;
        default:
            return 0;
        }
    });
}

MovAtom::Error
SampleDescriptionAtom::GetTimeCodeDescription(const TimeCodeSampleDescription **timeCode) const
{
    return Give<TimeCodeSampleDescription>(TimeCode(), ERROR_INVALID_RET_VAL, timeCode);
}

} // namespace Tavro::MovParserLib
