// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stsd`: what the samples of a track are.

#include "movparser/src/atom_children.h"
#include "movparser/src/mov_full_atom.h"
#include "movparser/src/sample_description.h"

#include <vector>

namespace Tavro::MovParserLib {

class AVCCAtom;
class ColorAtom;
class EsdsAtom;
class FieldsAtom;
class HVCCAtom;
class PixelAspectAtom;
class SoundSampleDescription;
class TimeCodeSampleDescription;
class VideoSampleDescription;

/// The kind of the track alone decides which class reads the entries; other kinds than video,
/// sound, time code, text and metadata fail to read. Questions are answered from the first entry.
class SampleDescriptionAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("stsd");

    SampleDescriptionAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    // The first entry as the class that the kind of the track gives it; null without an entry and
    // on a track of another kind.
    VideoSampleDescription *Video() const;
    SoundSampleDescription *Sound() const;
    TimeCodeSampleDescription *TimeCode() const;

    // All of these are ERROR_INVALID_RET_VAL without an entry or on a track of another kind, and
    // ERROR_INVALID_ARG for a null pointer.

    /// In pixels.
    [[nodiscard]] Error GetFrameSize(uint32_t *width, uint32_t *height) const;
    /// The fourcc of the data's format, on every kind of track.
    [[nodiscard]] Error GetCodec(uint32_t *format) const;

    // ERROR_ATOM_NOT_FOUND when the entry has none. The atom stays this object's.
    [[nodiscard]] Error GetPixelAspect(const PixelAspectAtom **atom) const;
    [[nodiscard]] Error GetColorParameters(const ColorAtom **atom) const;
    [[nodiscard]] Error GetFields(const FieldsAtom **atom) const;
    [[nodiscard]] Error GetAvcConfiguration(const AVCCAtom **atom) const;
    [[nodiscard]] Error GetHevcConfiguration(const HVCCAtom **atom) const;
    [[nodiscard]] Error GetEsds(const EsdsAtom **atom) const;

    // What a video entry says about a panorama: 0 for what it does not say, and the tool's text
    // stays as it was. Null pointers to angles are passed over.
    [[nodiscard]] Error GetStereoMode(uint32_t *mode) const;
    [[nodiscard]] Error GetProjection(uint32_t *projection) const;
    [[nodiscard]] Error GetInitialPose(float *yaw, float *pitch, float *roll) const;
    [[nodiscard]] Error GetWritingTool(std::string *tool) const;

    // What a sound entry says, from the fields that its version has for it.
    [[nodiscard]] Error GetSoundDescription(const SoundSampleDescription **sound) const;
    [[nodiscard]] Error GetChannelCount(uint32_t *channels) const;
    [[nodiscard]] Error GetSampleBits(uint32_t *bits) const;
    [[nodiscard]] Error GetSampleRate(double *rate) const; ///< In hertz.
    [[nodiscard]] Error GetCompressionId(int32_t *id) const;
    /// 0 where the entry's version does not say.
    [[nodiscard]] Error GetBytesPerPacket(uint32_t *bytes) const;

    [[nodiscard]] Error GetTimeCodeDescription(const TimeCodeSampleDescription **timeCode) const;

    /// Makes the only entry of a video track. ERROR_INVALID_OP on other tracks and when there is an
    /// entry already, ERROR_INVALID_ARG for a frame without width or height.
    [[nodiscard]] Error AddVideoDescription(uint32_t format, uint16_t width, uint16_t height);

    /// The same for sound; see SoundSampleDescription::SetFormat.
    [[nodiscard]] Error AddSoundDescription(uint32_t format, uint32_t channels, double rate);

    uint32_t mediaType = 0; ///< The track's handler type, set by the owner before Read().
    std::vector<AtomPtr<SampleDescription>> entries;

private:
    bool CanAdd(uint32_t kind) const { return mediaType == kind && entries.empty(); }

    SampleDescription *First(uint32_t kind) const;
};

} // namespace Tavro::MovParserLib
