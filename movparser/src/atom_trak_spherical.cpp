// SPDX-License-Identifier: GPL-3.0-or-later
// What a track says about a panorama, in the two generations of spherical metadata.

#include "movparser/src/atom_trak.h"
#include "movparser/src/video_sample_description.h"

namespace Tavro::MovParserLib {

namespace {

void SetNone(float *yaw, float *pitch, float *roll)
{
    for (float *angle : {yaw, pitch, roll}) {
        if (angle)
            *angle = 0;
    }
}

} // namespace

const VideoSampleDescription *TrackAtom::VideoDescription() const
{
    const SampleDescriptionAtom *descriptions = SampleDescriptions();
    return descriptions ? descriptions->Video() : nullptr;
}

VideoSampleDescription *TrackAtom::EnsureVideoDescription()
{
    SampleDescriptionAtom *descriptions = SampleDescriptions();
    if (!descriptions || descriptions->mediaType != FourCC("vide"))
        return nullptr;
    if (descriptions->entries.empty())
        descriptions->entries.emplace_back(std::make_unique<VideoSampleDescription>());
    return descriptions->Video();
}

// The newer atoms win outright: where there is a description, it answers for what it lacks as well,
// and the document in the `uuid` speaks only for tracks without one.

MovAtom::Error TrackAtom::GetStereoMode(uint32_t *mode) const
{
    if (!mode)
        return ERROR_INVALID_ARG;
    if (const VideoSampleDescription *description = VideoDescription())
        *mode = description->stereo ? description->stereo->GetStereoMode() : 0;
    else if (spherical)
        *mode = spherical->GetStereoMode();
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::GetProjection(uint32_t *projection) const
{
    if (!projection)
        return ERROR_INVALID_ARG;
    if (const VideoSampleDescription *description = VideoDescription())
        *projection =
            description->spherical ? description->spherical->GetProjection() : kProjectionUnknown;
    else if (spherical)
        *projection = spherical->GetProjection();
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::GetInitialPose(float *yaw, float *pitch, float *roll) const
{
    const VideoSampleDescription *description = VideoDescription();
    if (description && description->spherical)
        description->spherical->GetPose(yaw, pitch, roll);
    else if (description)
        SetNone(yaw, pitch, roll);
    else if (spherical)
        spherical->GetPose(yaw, pitch, roll);
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::GetWritingTool(std::string *tool, uint32_t *sourceCount) const
{
    if (!tool)
        return ERROR_INVALID_ARG;
    if (const VideoSampleDescription *description = VideoDescription()) {
        if (description->spherical)
            *tool = description->spherical->GetMetadataSource();
    } else if (spherical) {
        *tool = spherical->StitchingSoftware;
        if (sourceCount)
            *sourceCount = spherical->SourceCount;
    }
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::SetStereoMode(uint32_t mode)
{
    if (spherical)
        spherical->SetStereoMode(mode);
    VideoSampleDescription *description = EnsureVideoDescription();
    if (!description)
        return ERROR_INVALID_RET_VAL;
    description->stereo.Ensure().SetStereoMode(mode);
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::SetInitialPose(float yaw, float pitch, float roll)
{
    spherical.Ensure().SetPose(yaw, pitch, roll);
    VideoSampleDescription *description = EnsureVideoDescription();
    if (!description)
        return ERROR_INVALID_RET_VAL;
    description->spherical.Ensure().SetPose(yaw, pitch, roll);
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::SetEquirectangular(uint32_t top, uint32_t bottom, uint32_t left,
                                             uint32_t right)
{
    spherical.Ensure().SetBounds(top, bottom, left, right);
    VideoSampleDescription *description = EnsureVideoDescription();
    if (!description)
        return ERROR_INVALID_RET_VAL;
    description->spherical.Ensure().SetEqui(top, bottom, left, right);
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::SetCubemap(uint32_t layout, uint32_t padding)
{
    spherical.reset(); // the older form knows no cube map
    VideoSampleDescription *description = EnsureVideoDescription();
    if (!description)
        return ERROR_INVALID_RET_VAL;
    description->spherical.Ensure().SetCube(layout, padding);
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::SetWritingTool(const std::string &tool, uint32_t sourceCount)
{
    if (tool.empty())
        return ERROR_INVALID_ARG;
    spherical.Ensure().SetStitchingSoftware(tool);
    spherical->SetSourceCount(sourceCount);
    VideoSampleDescription *description = EnsureVideoDescription();
    return description ? description->spherical.Ensure().SetMetadataSource(tool)
                       : ERROR_INVALID_RET_VAL;
}

} // namespace Tavro::MovParserLib
