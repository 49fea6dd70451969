// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `trak`: one track of a movie.

#include "movparser/src/atom_edts.h"
#include "movparser/src/atom_mdia.h"
#include "movparser/src/atom_tkhd.h"
#include "movparser/src/atom_tref.h"
#include "movparser/src/atom_uuid.h"

namespace Tavro::MovParserLib {

/// `tkhd` and `mdia` are mandatory. Children that are not modelled are dropped.
class TrackAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("trak");

    TrackAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    [[nodiscard]] Error GetHandlerType(uint32_t *handlerType) const
    {
        return media.GetHandlerType(handlerType);
    }

    bool HasHandlerType(uint32_t handlerType) const;

    /// The handler's name: up to 254 bytes and a terminator.
    [[nodiscard]] Error GetName(char *buffer) const { return media.GetName(buffer); }

    uint32_t GetTimeScale() const { return media.header.timeScale; }

    uint32_t GetDuration() const { return media.header.duration; }

    /// The frame rate as units of time a second and units a frame. A value of 0 is none.
    [[nodiscard]] Error GetFrameDuration(uint64_t *timeScale, uint64_t *frameDuration) const;

    /// Sets the duration, in units of the media, and appends an edit that plays it at `rate`
    /// (16.16). ERROR_INVALID_ARG while the media has no time scale.
    [[nodiscard]] Error SetDuration(uint32_t mediaDuration, uint32_t movieTimeScale, uint32_t rate);

    /// The sample layers; without any, operations that say so.
    const MediaInformationAtom &Information() const { return media.Information(); }

    /// Null where the track's atoms do not lead there.
    SampleDescriptionAtom *SampleDescriptions() const
    {
        return Information().GetSampleDescriptions();
    }

    // What the track says about a panorama: by its first video description where that can be
    // reached, whether the wanted atom is there or not, and else by its XML document.
    [[nodiscard]] Error GetStereoMode(uint32_t *mode) const;
    [[nodiscard]] Error GetProjection(uint32_t *projection) const;
    [[nodiscard]] Error GetInitialPose(float *yaw, float *pitch, float *roll) const;
    [[nodiscard]] Error GetWritingTool(std::string *tool, uint32_t *sourceCount) const;

    // The same in both generations of the metadata. The first description is made when a video
    // track has none; ERROR_INVALID_RET_VAL where the track's atoms do not lead to one, in which
    // case the document may have been changed.

    /// 0 none, 1 left-right, 2 top-bottom. In the document only where there is one.
    [[nodiscard]] Error SetStereoMode(uint32_t mode);
    /// Degrees.
    [[nodiscard]] Error SetInitialPose(float yaw, float pitch, float roll);
    /// With the crop of each side in 1/2^32.
    [[nodiscard]] Error SetEquirectangular(uint32_t top, uint32_t bottom, uint32_t left,
                                           uint32_t right);
    /// Removes the document.
    [[nodiscard]] Error SetCubemap(uint32_t layout, uint32_t padding);
    /// ERROR_INVALID_ARG for an empty text.
    [[nodiscard]] Error SetWritingTool(const std::string &tool, uint32_t sourceCount);

    TrackHeaderAtom header;
    MediaAtom media;
    AtomPtr<EditAtom> edits;
    AtomPtr<TrackReferenceAtom> references;
    AtomPtr<sphericalVideoLegacyAtom> spherical;

private:
    template <class Older, class Newer> [[nodiscard]] Error SetBoth(Older &&older, Newer &&newer);
    VideoSampleDescription *EnsureVideoDescription();
};

} // namespace Tavro::MovParserLib
