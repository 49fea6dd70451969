// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/fuzz/sample_movie.h"

#include "movparser/src/sound_sample_description.h"
#include "movparser/src/tavro_metadata_sample_description.h"
#include "movparser/src/text_sample_description.h"
#include "movparser/src/time_code_sample_description.h"
#include "movparser/src/video_sample_description.h"

using namespace Tavro::MovParserLib;

namespace {
TrackAtom makeTrack(uint32_t id, uint32_t handlerType, const char *name)
{
    TrackAtom track;
    track.header.trackId = id;
    track.media.header.timeScale = 30000;
    track.media.header.duration = 3003;
    track.media.handler = std::make_unique<HandlerReferenceAtom>(
        HandlerReferenceAtom::kMediaHandler, handlerType, name);
    track.media.information = MakeMediaInformation(handlerType);
    return track;
}

/// The tables of three samples in two chunks. Returns the table of a kind of media.
template <class Information> SampleTableAtom &addSamples(TrackAtom *track, uint32_t handlerType)
{
    auto &information = dynamic_cast<Information &>(*track->media.information);
    information.handlerType = handlerType;
    information.header.Ensure();
    information.dataHandler = std::make_unique<HandlerReferenceAtom>(
        HandlerReferenceAtom::kDataHandler, HandlerReferenceAtom::kAliasSubtype, "data");
    DataReference reference;
    reference.type = FourCC("url ");
    information.dataInformation.Ensure().dataReference.Ensure().entries.push_back(reference);
    SampleTableAtom &table = information.sampleTable.Ensure();
    table.handlerType = handlerType;
    table.sampleDescriptions.mediaType = handlerType;
    table.sampleSizes.sampleCount = 3;
    table.sampleSizes.sizes = {100, 200, 300};
    table.sampleToChunk.entries = {{1, 2, 1}, {2, 1, 1}};
    table.chunkOffsets.offsets = {48, 5000};
    table.timeToSample.Ensure().entries = {{3, 1001}};
    return table;
}

TrackAtom videoTrack()
{
    TrackAtom track = makeTrack(1, FourCC("vide"), "Video");
    SampleTableAtom &table = addSamples<VideoMediaInformationAtom>(&track, FourCC("vide"));
    table.syncSamples.Ensure().sampleNumbers = {1, 3};
    table.compositionOffsets.Ensure().entries = {{2, 1001}, {1, -1001}};
    table.sampleDependencies.Ensure().dependencies = {0x20, 0x10, 0x10};
    static_cast<void>(table.sampleDescriptions.AddVideoDescription(FourCC("avc1"), 3840, 1920));
    VideoSampleDescription &description = *table.sampleDescriptions.Video();
    description.pixelAspect.Ensure();
    description.color.Ensure().colorParamType = ColorAtom::kNclx;
    description.fields.Ensure();
    description.avcc.Ensure().sequenceParameterSet = {0x67, 1, 2, 3};
    description.avcc->pictureParameterSet = {0x68, 4};
    description.hvcc.Ensure().arrays.push_back({true, 32, {{1, 2}, {3}}});
    track.edits.Ensure().editList.Ensure().entries = {{3003, 0, 0x10000}};
    track.references.Ensure().references.push_back({FourCC("tmcd"), {3}});
    return track;
}

TrackAtom soundTrack()
{
    TrackAtom track = makeTrack(2, FourCC("soun"), "Sound");
    SampleTableAtom &table = addSamples<SoundMediaInformationAtom>(&track, FourCC("soun"));
    static_cast<void>(table.sampleDescriptions.AddSoundDescription(FourCC("mp4a"), 4, 48000));
    table.sampleDescriptions.Sound()->spatialAudio.Ensure().ambisonic_order = 1;
    auto compressed = std::make_unique<SoundSampleDescription>();
    static_cast<void>(compressed->SetFormat(FourCC("sowt"), 2, 44100));
    compressed->version = 1;
    compressed->wave->endian.Ensure().littleEndian = 1;
    table.sampleDescriptions.entries.emplace_back(std::move(compressed));
    return track;
}

template <class Description> TrackAtom otherTrack(uint32_t id, uint32_t kind, const char *name)
{
    TrackAtom track = makeTrack(id, kind, name);
    SampleTableAtom &table = addSamples<BaseMediaInformationAtom>(&track, kind);
    table.sampleDescriptions.entries.emplace_back(std::make_unique<Description>());
    auto &header = *dynamic_cast<BaseMediaInformationAtom &>(*track.media.information).header;
    header.mediaInfo.Ensure();
    header.timeCodeHandler.Ensure().mediaInformation.Ensure();
    return track;
}

void fillUserData(UserDataAtom *userData)
{
    const std::vector<uint32_t> tags = {1500, 62000};
    userData->firmware.Ensure().SetVersion("1.0");
    userData->cameraId.Ensure().data = {1, 2, 3, 4};
    userData->settings.Ensure();
    userData->lens.Ensure().data = {'T'};
    userData->fov.Ensure().data = {'w', 'i', 'd', 'e', 0};
    userData->rigIdentity.Ensure().record.rig_type = 3;
    userData->rigShot.Ensure().record.chapter_number = 2;
    userData->tags.Ensure();
    static_cast<void>(userData->SetTags(static_cast<int>(tags.size()), tags.data()));
    userData->mediaUniqueId.Ensure().data.assign(16, 0xab);
}
} // namespace

MovieAtom fullMovie()
{
    MovieAtom movie;
    movie.header.timeScale = 30000;
    TrackAtom video = videoTrack();
    static_cast<void>(video.SetEquirectangular(1, 2, 3, 4));
    static_cast<void>(video.SetStereoMode(2));
    static_cast<void>(video.SetInitialPose(90, -45, 10));
    static_cast<void>(video.SetWritingTool("Writer", 2));
    movie.tracks = {video, soundTrack(),
                    otherTrack<TimeCodeSampleDescription>(3, FourCC("tmcd"), "Time code"),
                    otherTrack<TextSampleDescription>(4, FourCC("text"), "Chapters"),
                    otherTrack<TavroMetadataSampleDescription>(5, FourCC("meta"), "Tavro MET")};
    fillUserData(&movie.user_data.Ensure());
    return movie;
}

MovieAtom legacyMovie()
{
    MovieAtom movie;
    TrackAtom video = makeTrack(1, FourCC("vide"), "Video");
    addSamples<VideoMediaInformationAtom>(&video, FourCC("vide"));
    video.spherical.Ensure().SetStitchingSoftware("Stitcher");
    video.spherical->SetStereoMode(1);
    movie.tracks = {video};
    return movie;
}
