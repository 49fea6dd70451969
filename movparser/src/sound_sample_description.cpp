// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/sound_sample_description.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>

namespace Tavro::MovParserLib {

namespace {

/// Bits of one sample of one channel.
uint16_t BitsOfFormat(uint32_t format)
{
    switch (format) {
    case FourCC("in24"):
    case FourCC("s24l"):
        return 24;
    case FourCC("fl32"):
    case FourCC("in32"):
    case FourCC("s32l"):
        return 32;
    case FourCC("fl64"):
        return 64;
    default:
        return 16;
    }
}

bool IsUncompressed(uint32_t format)
{
    switch (format) {
    case FourCC("in16"):
    case FourCC("raw "):
    case FourCC("s16l"):
    case FourCC("sowt"):
    case FourCC("twos"):
    case FourCC("in24"):
    case FourCC("s24l"):
    case FourCC("fl32"):
    case FourCC("in32"):
    case FourCC("s32l"):
    case FourCC("fl64"):
        return true;
    default:
        return false;
    }
}

/// The number that comes nearest; 0 for what is no rate.
uint32_t ToUInt32(double value)
{
    return value > 0 ? static_cast<uint32_t>(std::min(value, double{UINT32_MAX})) : 0;
}

} // namespace

uint64_t SoundSampleDescription::GetSize() const
{
    uint64_t bytes = SampleDescription::GetSize() + SizeOfFields(Fields(*this));
    if (version == 1)
        bytes += SizeOfFields(Version1Fields(*this));
    else if (version == 2)
        bytes += SizeOfFields(Version2Fields(*this));
    return bytes + SizeOfChild(wave) + SizeOfChild(esds) + SizeOfChild(spatialAudio)
        + SizeOfUnparsed(unparsed);
}

MovAtom::Error SoundSampleDescription::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    *this = SoundSampleDescription();
    MOV_READ(scope, SampleDescription::Read(buffer));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    if (version == 1)
        MOV_READ(scope, ReadFields(buffer, Version1Fields(*this)));
    else if (version == 2)
        MOV_READ(scope, ReadFields(buffer, Version2Fields(*this)));
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 switch (child) {
                 case WaveAtom::kType:
                     return ReadChild(buffer, &wave);
                 case EsdsAtom::kType:
                     return ReadChild(buffer, &esds);
                 case spatialAudioAtom::kType:
                     return ReadChild(buffer, &spatialAudio);
                 default:
                     return ReadUnparsed(buffer, &unparsed);
                 }
             }));
    return scope.Finish(size);
}

MovAtom::Error SoundSampleDescription::Write(FileBuffer &buffer)
{
    MOV_WRITE(SampleDescription::Write(buffer));
    MOV_WRITE(WriteFields(buffer, Fields(*this)));
    if (version == 1)
        MOV_WRITE(WriteFields(buffer, Version1Fields(*this)));
    else if (version == 2)
        MOV_WRITE(WriteFields(buffer, Version2Fields(*this)));
    MOV_WRITE(WriteChild(buffer, wave));
    MOV_WRITE(WriteChild(buffer, esds));
    MOV_WRITE(WriteChild(buffer, spatialAudio));
    return WriteUnparsed(buffer, &unparsed);
}

void SoundSampleDescription::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SoundSampleDescription");
    const uint32_t d = block.Depth();
    SampleDescription::PrintToString(out, d);
    PrintLine(out, d, "Version: %d", version);
    PrintLine(out, d, "RevisionLevel: %d", revisionLevel);
    PrintFourCC(out, d, "Vendor: ", vendor);
    PrintLine(out, d, "NumberOfChannels: %d", numberOfChannels);
    PrintLine(out, d, "SampleSize: %d", sampleSize);
    PrintLine(out, d, "CompressionID: %d", compressionId);
    PrintLine(out, d, "PacketSize: %d", packetSize);
    PrintLine(out, d, "SampleRate: %f", sampleRate / 65536.0);
    if (version == 1) {
        PrintLine(out, d, "SamplesPerPacket: %d", samplesPerPacket);
        PrintLine(out, d, "BytesPerPacket: %d", bytesPerPacket);
        PrintLine(out, d, "BytesPerFrame: %d", bytesPerFrame);
        PrintLine(out, d, "BytesPerSample: %d", bytesPerSample);
    } else if (version == 2) {
        PrintLine(out, d, "SizeOfStructure: %d", sizeOfStructure);
        PrintLine(out, d, "AudioSampleRate: %f", audioSampleRate);
        PrintLine(out, d, "ChannelCount: %d", channelCount);
        PrintLine(out, d, "Constant: %08x", constant);
        PrintLine(out, d, "BitsPerChannel: %d", bitsPerChannel);
        PrintLine(out, d, "FormatFlags: %08x", formatFlags);
        PrintLine(out, d, "BytesPerAudioPacket: %d", bytesPerAudioPacket);
        PrintLine(out, d, "LPCMFramesPerAudioPacket: %d", lpcmFramesPerAudioPacket);
    }
    block.Child(wave);
    block.Child(esds);
    block.Child(spatialAudio);
    PrintUnparsed(out, d, unparsed);
}

MovAtom::Error SoundSampleDescription::SetFormat(uint32_t format, uint32_t channels, double rate)
{
    if (!IsUncompressed(format) && format != FourCC("mp4a"))
        return MovAtom::ERROR_INVALID_ARG;
    *this = SoundSampleDescription();
    data_format = format;
    version = 2;
    numberOfChannels = static_cast<uint16_t>(std::min<uint32_t>(channels, UINT16_MAX));
    sampleSize = BitsOfFormat(format);
    sampleRate = ToUInt32(rate * 65536.0); // rates from 65536 on have no 16.16 form
    audioSampleRate = rate;
    channelCount = channels;
    bitsPerChannel = sampleSize;
    bytesPerSample = sampleSize / 8U;
    bytesPerFrame = bytesPerSample * channels;
    if (format == FourCC("mp4a")) {
        compressionId = -2;
        esds.Ensure().SetAudio(ToUInt32(rate), channels);
    } else {
        samplesPerPacket = lpcmFramesPerAudioPacket = 1;
        bytesPerPacket = bytesPerAudioPacket = bytesPerFrame;
        wave.Ensure().format.Ensure().format = format;
        wave->settings.emplace_back();
    }
    return MovAtom::ERROR_OKAY;
}

std::unique_ptr<SampleDescription> SoundSampleDescription::Clone() const
{
    return std::make_unique<SoundSampleDescription>(*this);
}

} // namespace Tavro::MovParserLib
