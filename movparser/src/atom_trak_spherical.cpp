// SPDX-License-Identifier: GPL-3.0-or-later
// What a track says about a panorama, in the two generations of spherical metadata.

#include "movparser/src/atom_trak.h"
#include "movparser/src/video_sample_description.h"

namespace Tavro::MovParserLib {

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
// and the document in the `uuid` speaks only for tracks without one. Without either, nothing is
// changed and that is no failure.

MovAtom::Error TrackAtom::GetStereoMode(uint32_t *mode) const
{
    if (!mode)
        return ERROR_INVALID_ARG;
    if (Information().GetStereoMode(mode) != ERROR_OKAY && spherical)
        *mode = spherical->GetStereoMode();
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::GetProjection(uint32_t *projection) const
{
    if (!projection)
        return ERROR_INVALID_ARG;
    if (Information().GetProjection(projection) != ERROR_OKAY && spherical)
        *projection = spherical->GetProjection();
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::GetInitialPose(float *yaw, float *pitch, float *roll) const
{
    if (Information().GetInitialPose(yaw, pitch, roll) != ERROR_OKAY && spherical)
        spherical->GetPose(yaw, pitch, roll);
    return ERROR_OKAY;
}

MovAtom::Error TrackAtom::GetWritingTool(std::string *tool, uint32_t *sourceCount) const
{
    if (!tool)
        return ERROR_INVALID_ARG;
    const Error error = Information().GetWritingTool(tool);
    if (error != ERROR_INVALID_RET_VAL)
        return error;
    return OrNoMemory([&] {
        if (spherical)
            *tool = spherical->StitchingSoftware;
        if (spherical && sourceCount)
            *sourceCount = spherical->SourceCount;
        return ERROR_OKAY;
    });
}

// Sets what the track says in both generations: `older(document)`, then `newer(description)`,
// which return codes.
template <class Older, class Newer> MovAtom::Error TrackAtom::SetBoth(Older &&older, Newer &&newer)
{
    return OrNoMemory([&] {
        older(spherical);
        VideoSampleDescription *description = EnsureVideoDescription();
        return description ? newer(*description) : ERROR_INVALID_RET_VAL;
    });
}

MovAtom::Error TrackAtom::SetStereoMode(uint32_t mode)
{
    return SetBoth(
        [mode](auto &document) {
            if (document)
                document->SetStereoMode(mode);
        },
        [mode](auto &description) {
            description.stereo.Ensure().SetStereoMode(mode);
            return ERROR_OKAY;
        });
}

MovAtom::Error TrackAtom::SetInitialPose(float yaw, float pitch, float roll)
{
    return SetBoth([&](auto &document) { document.Ensure().SetPose(yaw, pitch, roll); },
                   [&](auto &description) {
                       description.spherical.Ensure().SetPose(yaw, pitch, roll);
                       return ERROR_OKAY;
                   });
}

MovAtom::Error TrackAtom::SetEquirectangular(uint32_t top, uint32_t bottom, uint32_t left,
                                             uint32_t right)
{
    return SetBoth([&](auto &document) { document.Ensure().SetBounds(top, bottom, left, right); },
                   [&](auto &description) {
                       description.spherical.Ensure().SetEqui(top, bottom, left, right);
                       return ERROR_OKAY;
                   });
}

MovAtom::Error TrackAtom::SetCubemap(uint32_t layout, uint32_t padding)
{
    return SetBoth([](auto &document) { document.reset(); }, // the older form knows no cube map
                   [&](auto &description) {
                       description.spherical.Ensure().SetCube(layout, padding);
                       return ERROR_OKAY;
                   });
}

MovAtom::Error TrackAtom::SetWritingTool(const std::string &tool, uint32_t sourceCount)
{
    if (tool.empty())
        return ERROR_INVALID_ARG;
    return SetBoth(
        [&](auto &document) {
            document.Ensure().SetStitchingSoftware(tool);
            document->SetSourceCount(sourceCount);
        },
        [&](auto &description) { return description.spherical.Ensure().SetMetadataSource(tool); });
}

} // namespace Tavro::MovParserLib
