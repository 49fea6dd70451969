// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stsd`: what the samples of a track are.

#include "movparser/src/atom_children.h"
#include "movparser/src/mov_full_atom.h"
#include "movparser/src/sample_description.h"

#include <vector>

namespace Tavro::MovParserLib {

class AVCCAtom;
class HVCCAtom;
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
    [[nodiscard]] Error GetAvcConfiguration(const AVCCAtom **configuration) const;
    [[nodiscard]] Error GetHevcConfiguration(const HVCCAtom **configuration) const;

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
