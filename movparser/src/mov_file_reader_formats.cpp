// SPDX-License-Identifier: GPL-3.0-or-later
// The questions to MovFileReader about what samples are, and about the user data.
#include "movparser/src/mov_file_reader.h"
#include "movparser/src/report_error.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/time_code_sample_description.h"
#include "movparser/src/video_sample_description.h"

namespace Tavro::MovParserLib {

namespace {

/// What a lookup of something that the reader owns comes to: `found` may be null.
template <class T> uint32_t Give(const T *found, MovAtom::Error missing, const T **out)
{
    if (!out)
        return ReportError(kParserDomain, MovParser::ERROR_INVALID_ARG);
    *out = found;
    return found ? 0 : ReportError(kAtomDomain, missing);
}

/// A child of the first video description.
template <class T>
uint32_t GiveChild(const TrackAtom *track, const AtomPtr<T> VideoSampleDescription::*member,
                   const T **out)
{
    const SampleDescriptionAtom *descriptions = track ? track->SampleDescriptions() : nullptr;
    const VideoSampleDescription *description = descriptions ? descriptions->Video() : nullptr;
    return description ? Give<T>((description->*member).get(), MovAtom::ERROR_ATOM_NOT_FOUND, out)
                       : Give<T>(nullptr, MovAtom::ERROR_INVALID_RET_VAL, out);
}

} // namespace

uint32_t MovFileReader::GetCodec(uint32_t *format, TrackRef ref) const
{
    if (!format)
        return ReportError(kParserDomain, ERROR_INVALID_ARG);
    const TrackAtom *track = Find(ref);
    const SampleDescriptionAtom *descriptions = track ? track->SampleDescriptions() : nullptr;
    const MovAtom::Error error =
        descriptions ? descriptions->GetCodec(format) : MovAtom::ERROR_INVALID_RET_VAL;
    return error == MovAtom::ERROR_OKAY ? 0 : ReportError(kAtomDomain, error);
}

uint32_t MovFileReader::GetPixelAspect(const PixelAspectAtom **atom) const
{
    return GiveChild(Find({}), &VideoSampleDescription::pixelAspect, atom);
}

uint32_t MovFileReader::GetColorParameters(const ColorAtom **atom) const
{
    return GiveChild(Find({}), &VideoSampleDescription::color, atom);
}

uint32_t MovFileReader::GetFields(const FieldsAtom **atom) const
{
    return GiveChild(Find({}), &VideoSampleDescription::fields, atom);
}

uint32_t MovFileReader::GetAvcConfiguration(const AVCCAtom **atom) const
{
    return GiveChild(Find({}), &VideoSampleDescription::avcc, atom);
}

uint32_t MovFileReader::GetHevcConfiguration(const HVCCAtom **atom) const
{
    return GiveChild(Find({}), &VideoSampleDescription::hvcc, atom);
}

uint32_t MovFileReader::GetSoundDescription(const SoundSampleDescription **description,
                                            uint32_t n) const
{
    const TrackAtom *track = Find({FourCC("soun"), n});
    const SampleDescriptionAtom *descriptions = track ? track->SampleDescriptions() : nullptr;
    return Give<SoundSampleDescription>(descriptions ? descriptions->Sound() : nullptr,
                                        MovAtom::ERROR_INVALID_RET_VAL, description);
}

uint32_t MovFileReader::GetEsds(const EsdsAtom **atom, uint32_t n) const
{
    if (!atom)
        return ReportError(kParserDomain, ERROR_INVALID_ARG);
    const SoundSampleDescription *description = nullptr;
    const uint32_t error = GetSoundDescription(&description, n);
    return error != 0
        ? error
        : Give<EsdsAtom>(description->esds.get(), MovAtom::ERROR_ATOM_NOT_FOUND, atom);
}

uint32_t MovFileReader::GetTimeCodeDescription(const TimeCodeSampleDescription **description) const
{
    const TrackAtom *track = FindTimeCodeTrack();
    const SampleDescriptionAtom *descriptions = track ? track->SampleDescriptions() : nullptr;
    return Give<TimeCodeSampleDescription>(descriptions ? descriptions->TimeCode() : nullptr,
                                           MovAtom::ERROR_INVALID_RET_VAL, description);
}

uint32_t MovFileReader::GetUserData(const UserDataAtom **userData) const
{
    return Give<UserDataAtom>(movie.user_data.get(), MovAtom::ERROR_ATOM_NOT_FOUND, userData);
}

} // namespace Tavro::MovParserLib
