// SPDX-License-Identifier: GPL-3.0-or-later
// The questions to MovFileReader about what samples are, and about the user data.
#include "movparser/src/mov_file_reader.h"

namespace Tavro::MovParserLib {

namespace {

constexpr uint32_t kSound = FourCC("soun");

} // namespace

uint32_t MovFileReader::GetCodec(uint32_t *format, TrackRef track) const
{
    return Ask(Find(track), &MediaInformationAtom::GetCodec, format);
}

uint32_t MovFileReader::GetPixelAspect(const PixelAspectAtom **atom) const
{
    return Ask(Find({}), &MediaInformationAtom::GetPixelAspect, atom);
}

uint32_t MovFileReader::GetColorParameters(const ColorAtom **atom) const
{
    return Ask(Find({}), &MediaInformationAtom::GetColorParameters, atom);
}

uint32_t MovFileReader::GetFields(const FieldsAtom **atom) const
{
    return Ask(Find({}), &MediaInformationAtom::GetFields, atom);
}

uint32_t MovFileReader::GetAvcConfiguration(const AVCCAtom **atom) const
{
    return Ask(Find({}), &MediaInformationAtom::GetAvcConfiguration, atom);
}

uint32_t MovFileReader::GetHevcConfiguration(const HVCCAtom **atom) const
{
    return Ask(Find({}), &MediaInformationAtom::GetHevcConfiguration, atom);
}

uint32_t MovFileReader::GetSoundDescription(const SoundSampleDescription **description,
                                            uint32_t n) const
{
    return Ask(Find({kSound, n}), &MediaInformationAtom::GetSoundDescription, description);
}

uint32_t MovFileReader::GetChannelCount(uint32_t *channels, uint32_t n) const
{
    return Ask(Find({kSound, n}), &MediaInformationAtom::GetChannelCount, channels);
}

uint32_t MovFileReader::GetSampleBits(uint32_t *bits, uint32_t n) const
{
    return Ask(Find({kSound, n}), &MediaInformationAtom::GetSampleBits, bits);
}

uint32_t MovFileReader::GetSampleRate(double *rate, uint32_t n) const
{
    return Ask(Find({kSound, n}), &MediaInformationAtom::GetSampleRate, rate);
}

uint32_t MovFileReader::GetCompressionId(int32_t *id, uint32_t n) const
{
    return Ask(Find({kSound, n}), &MediaInformationAtom::GetCompressionId, id);
}

uint32_t MovFileReader::GetBytesPerPacket(uint32_t *bytes, uint32_t n) const
{
    return Ask(Find({kSound, n}), &MediaInformationAtom::GetBytesPerPacket, bytes);
}

uint32_t MovFileReader::GetEsds(const EsdsAtom **atom, uint32_t n) const
{
    return Ask(Find({kSound, n}), &MediaInformationAtom::GetEsds, atom);
}

uint32_t MovFileReader::GetTimeCodeDescription(const TimeCodeSampleDescription **description) const
{
    return Ask(FindTimeCodeTrack(), &MediaInformationAtom::GetTimeCodeDescription, description);
}

uint32_t MovFileReader::GetUserData(const UserDataAtom **userData) const
{
    if (!userData)
        return InvalidArgument();
    *userData = movie.user_data.get();
    return Report(*userData ? MovAtom::ERROR_OKAY : MovAtom::ERROR_ATOM_NOT_FOUND);
}

} // namespace Tavro::MovParserLib
