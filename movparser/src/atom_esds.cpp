// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_esds.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"
#include "movparser/src/bit_reader.h"

#include <algorithm>
#include <array>

namespace Tavro::MovParserLib {

namespace {

enum DescriptorTag : uint8_t {
    kStreamTag = 3,
    kDecoderConfigTag = 4,
    kDecoderSpecificInfoTag = 5,
    kSyncLayerConfigTag = 6
};

constexpr std::array<uint32_t, 13> kSamplingFrequencies = {
    96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};
constexpr uint8_t kFrequencyInClear = 15;

// A descriptor's tag, and its length in the four-byte form that every reader knows.
constexpr uint64_t kDescriptorHead = 5;
constexpr uint64_t kMaxDescriptorLength = (1U << 28) - 1;
constexpr uint64_t kDecoderConfigFields = 13;

MovAtom::Error ReadDescriptorHead(FileBuffer &buffer, uint8_t *tag, uint32_t *length)
{
    *length = 0;
    MovAtom::Error error = ReadNumber(buffer, tag);
    uint8_t byte = 0x80;
    for (int i = 0; i < 4 && (byte & 0x80) != 0 && error == MovAtom::ERROR_OKAY; ++i) {
        error = ReadNumber(buffer, &byte);
        *length = *length << 7 | (byte & 0x7fU);
    }
    return error;
}

MovAtom::Error WriteDescriptorHead(FileBuffer &buffer, uint8_t tag, uint64_t length)
{
    if (length > kMaxDescriptorLength)
        return MovAtom::ERROR_ATOM_WRITE_FAILED;
    std::array<uint8_t, 4> bytes;
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>((length >> (7 * (3 - i)) & 0x7f) | (i < 3 ? 0x80 : 0));
    MOV_WRITE(WriteNumber(buffer, tag));
    return WriteFields(buffer, std::tie(bytes));
}

/// The audio object types of general audio coding, whose settings go on with GASpecificConfig.
bool IsGeneralAudio(uint8_t type)
{
    switch (type) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 6:
    case 7:
    case 17:
    case 19:
    case 20:
    case 21:
    case 22:
    case 23:
        return true;
    default:
        return false;
    }
}

uint8_t TakeObjectType(BitReader *bits)
{
    constexpr uint32_t kEscape = 31;
    const uint32_t type = bits->Take(5);
    return static_cast<uint8_t>(type == kEscape ? 32 + bits->Take(6) : type);
}

} // namespace

MovAtom::Error EsdsAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint8_t tag = 0;
    uint32_t length = 0;
    *this = EsdsAtom();
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadDescriptorHead(buffer, &tag, &length));
    if (tag == kStreamTag)
        MOV_READ(scope, ReadStreamFields(buffer));
    // The descriptors that follow lie in each other, but each one's own fields come first: a walk
    // over heads sees them all. One that claims more bytes than the atom has ends the walk.
    while (tag == kStreamTag && scope.Remaining(size) >= 2) {
        uint8_t inner = 0;
        MOV_READ(scope, ReadDescriptorHead(buffer, &inner, &length));
        if (length > scope.Remaining(size))
            break;
        if (inner == kDecoderConfigTag) {
            MOV_READ(scope, ReadDecoderConfig(buffer));
        } else if (inner == kDecoderSpecificInfoTag) {
            MOV_READ(scope, ReadBytes(buffer, length, &decoderSpecificInfo));
            DecodeSpecificInfo();
        } else {
            const uint8_t *bytes = buffer.ReadInPlace(length);
            if (!bytes)
                return scope.Fail();
            if (inner == kSyncLayerConfigTag && length > 0)
                SLConfigDescriptor.predefined = bytes[0];
        }
    }
    return scope.Finish(size);
}

MovAtom::Error EsdsAtom::ReadStreamFields(FileBuffer &buffer)
{
    uint8_t packed = 0;
    uint8_t urlLength = 0;
    Error error = ReadFields(buffer, std::tie(ES_Descriptor.esId, packed));
    ES_Descriptor.streamDependenceFlag = (packed & 0x80) != 0;
    ES_Descriptor.URLFlag = (packed & 0x40) != 0;
    ES_Descriptor.oCRstreamFlag = (packed & 0x20) != 0;
    ES_Descriptor.streamPriority = packed & 0x1f;
    if (error == ERROR_OKAY && ES_Descriptor.streamDependenceFlag)
        error = ReadNumber(buffer, &ES_Descriptor.dependsOnEsId);
    if (error == ERROR_OKAY && ES_Descriptor.URLFlag)
        error = ReadNumber(buffer, &urlLength);
    if (error == ERROR_OKAY)
        error = ReadBytes(buffer, urlLength, &ES_Descriptor.URLString);
    if (error == ERROR_OKAY && ES_Descriptor.oCRstreamFlag)
        error = ReadNumber(buffer, &ES_Descriptor.oCREsId);
    return error;
}

MovAtom::Error EsdsAtom::ReadDecoderConfig(FileBuffer &buffer)
{
    auto &config = decoderConfigDescriptor;
    uint32_t packed = 0; // stream type, direction, a reserved bit and the size of the buffer
    const Error error = ReadFields(
        buffer,
        std::tie(config.objectTypeIndication, packed, config.maxBitRate, config.avgBitRate));
    if (error == ERROR_OKAY) {
        config.streamType = static_cast<uint8_t>(packed >> 26);
        config.upStream = (packed & 0x2000000) != 0;
        config.bufferSizeDB = packed & 0xffffff;
    }
    return error;
}

void EsdsAtom::DecodeSpecificInfo()
{
    BitReader bits(decoderSpecificInfo.data(), decoderSpecificInfo.size());
    auto &audio = AudioSpecificConfig;
    auto &ga = GASpecificConfig;
    audio = decltype(AudioSpecificConfig)();
    ga = decltype(GASpecificConfig)();
    if (decoderSpecificInfo.empty())
        return;
    audio.audioObjectType = TakeObjectType(&bits);
    audio.samplingFrequencyIndex = static_cast<uint8_t>(bits.Take(4));
    audio.samplingFrequency = audio.samplingFrequencyIndex == kFrequencyInClear ? bits.Take(24) : 0;
    audio.channelConfiguration = static_cast<uint8_t>(bits.Take(4));
    if (!IsGeneralAudio(audio.audioObjectType))
        return;
    ga.frameLengthFlag = bits.Take(1) != 0;
    ga.dependsOnCoreCoder = bits.Take(1) != 0;
    if (ga.dependsOnCoreCoder)
        ga.coreCoderDelay = static_cast<uint16_t>(bits.Take(14));
    ga.extensionFlag = bits.Take(1) != 0;
    if (audio.channelConfiguration == 0)
        return; // a program configuration follows; it stays in the bytes
    if (audio.audioObjectType == 6 || audio.audioObjectType == 20)
        ga.layerNr = static_cast<uint8_t>(bits.Take(3));
    if (!ga.extensionFlag)
        return;
    if (audio.audioObjectType == 22) {
        ga.numOfSubFrame = static_cast<uint8_t>(bits.Take(5));
        ga.layer_length = static_cast<uint16_t>(bits.Take(11));
    } else if (audio.audioObjectType == 17 || audio.audioObjectType == 19
               || audio.audioObjectType == 20 || audio.audioObjectType == 23) {
        ga.aacSectionDataResilienceFlag = bits.Take(1) != 0;
        ga.aacScalefactorDataResilienceFlag = bits.Take(1) != 0;
        ga.aacSpectralDataResilienceFlag = bits.Take(1) != 0;
    }
}

void EsdsAtom::SetAudio(uint32_t sampleRate, uint32_t channels)
{
    auto &audio = AudioSpecificConfig;
    const auto found =
        std::find(kSamplingFrequencies.begin(), kSamplingFrequencies.end(), sampleRate);
    const bool inTable = found != kSamplingFrequencies.end();
    audio.audioObjectType = 2;
    audio.samplingFrequencyIndex =
        inTable ? static_cast<uint8_t>(found - kSamplingFrequencies.begin()) : kFrequencyInClear;
    audio.samplingFrequency = inTable ? 0 : sampleRate & 0xffffff;
    // The standard's configurations: 1 to 6 are so many channels, 7 is eight, 0 is told elsewhere.
    audio.channelConfiguration = static_cast<uint8_t>(channels <= 6       ? channels
                                                          : channels == 8 ? 7
                                                                          : 0);
    GASpecificConfig = decltype(GASpecificConfig)();

    uint64_t bits = audio.audioObjectType;
    bits = bits << 4 | audio.samplingFrequencyIndex;
    if (!inTable)
        bits = bits << 24 | audio.samplingFrequency;
    bits = (bits << 4 | audio.channelConfiguration) << 3; // the three flags of general audio
    decoderSpecificInfo.resize(inTable ? 2 : 5);
    for (size_t i = decoderSpecificInfo.size(); i-- > 0; bits >>= 8)
        decoderSpecificInfo[i] = static_cast<uint8_t>(bits);
}

MovAtom::Error EsdsAtom::Write(FileBuffer &buffer)
{
    const auto &es = ES_Descriptor;
    const auto &config = decoderConfigDescriptor;
    const uint8_t flags8 =
        static_cast<uint8_t>((es.streamDependenceFlag ? 0x80U : 0U) | (es.URLFlag ? 0x40U : 0U)
                             | (es.oCRstreamFlag ? 0x20U : 0U) | (es.streamPriority & 0x1fU));
    const uint32_t packed = (config.streamType & 0x3fU) << 26 | (config.upStream ? 0x2000000U : 0U)
        | 0x1000000U | (config.bufferSizeDB & 0xffffffU);
    if (es.URLString.size() > UINT8_MAX)
        return ERROR_ATOM_WRITE_FAILED;
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteDescriptorHead(buffer, kStreamTag, StreamLength()));
    MOV_WRITE(WriteFields(buffer, std::tie(es.esId, flags8)));
    if (es.streamDependenceFlag)
        MOV_WRITE(WriteNumber(buffer, es.dependsOnEsId));
    if (es.URLFlag) {
        MOV_WRITE(WriteNumber(buffer, static_cast<uint8_t>(es.URLString.size())));
        MOV_WRITE(WriteBytes(buffer, es.URLString.data(), es.URLString.size()));
    }
    if (es.oCRstreamFlag)
        MOV_WRITE(WriteNumber(buffer, es.oCREsId));
    MOV_WRITE(WriteDescriptorHead(buffer, kDecoderConfigTag, DecoderConfigLength()));
    MOV_WRITE(WriteFields(
        buffer,
        std::tie(config.objectTypeIndication, packed, config.maxBitRate, config.avgBitRate)));
    if (!decoderSpecificInfo.empty()) {
        MOV_WRITE(WriteDescriptorHead(buffer, kDecoderSpecificInfoTag, decoderSpecificInfo.size()));
        MOV_WRITE(WriteBytes(buffer, decoderSpecificInfo.data(), decoderSpecificInfo.size()));
    }
    MOV_WRITE(
        WriteDescriptorHead(buffer, kSyncLayerConfigTag, sizeof SLConfigDescriptor.predefined));
    return WriteNumber(buffer, SLConfigDescriptor.predefined);
}

uint64_t EsdsAtom::GetSize() const
{
    return MovFullAtom::GetSize() + kDescriptorHead + StreamLength();
}

uint64_t EsdsAtom::StreamLength() const
{
    const auto &es = ES_Descriptor;
    uint64_t fields = sizeof es.esId + sizeof(uint8_t);
    if (es.streamDependenceFlag)
        fields += sizeof es.dependsOnEsId;
    if (es.URLFlag)
        fields += sizeof(uint8_t) + es.URLString.size();
    if (es.oCRstreamFlag)
        fields += sizeof es.oCREsId;
    return fields + kDescriptorHead + DecoderConfigLength() + kDescriptorHead
        + sizeof SLConfigDescriptor.predefined;
}

uint64_t EsdsAtom::DecoderConfigLength() const
{
    return kDecoderConfigFields
        + (decoderSpecificInfo.empty() ? 0 : kDescriptorHead + decoderSpecificInfo.size());
}

void EsdsAtom::PrintToString(std::string *out, uint32_t depth) const
{
    // Dumps have always closed with the longer name: what takes them apart looks for it.
    const PrintBlock block(out, depth, "EsdsAtom", "SoundSampleDescription::EsdsAtom");
    const uint32_t d = block.Depth();
    const auto &es = ES_Descriptor;
    const auto &config = decoderConfigDescriptor;
    const auto &audio = AudioSpecificConfig;
    const auto &ga = GASpecificConfig;
    const auto printByte = [out](uint8_t byte) { PrintText(out, "%02x ", byte); };
    MovFullAtom::PrintToString(out, d);
    PrintLine(out, d, "esId: %d", es.esId);
    PrintLine(out, d, "streamDependenceFlag: %d", es.streamDependenceFlag);
    PrintLine(out, d, "URLFlag: %d", es.URLFlag);
    PrintLine(out, d, "oCRstreamFlag: %d", es.oCRstreamFlag);
    PrintLine(out, d, "streamPriority: %d", es.streamPriority);
    PrintLine(out, d, "dependsOnEsId: %d", es.dependsOnEsId);
    PrintLine(out, d, "URLLength: %zu", es.URLString.size());
    PrintTable(out, d, "URLString: ", es.URLString, printByte);
    PrintLine(out, d, "oCREsId: %d", es.oCREsId);
    PrintLine(out, d, "objectTypeIndication: %d", config.objectTypeIndication);
    PrintLine(out, d, "streamType: %d", config.streamType);
    PrintLine(out, d, "upStream: %d", config.upStream);
    PrintLine(out, d, "bufferSizeDB: %d", config.bufferSizeDB);
    PrintLine(out, d, "maxBitRate: %d", config.maxBitRate);
    PrintLine(out, d, "avgBitRate: %d", config.avgBitRate);
    PrintTable(out, d, "decoderSpecificInfo: ", decoderSpecificInfo, printByte);
    PrintLine(out, d, "audioObjectType: %d", audio.audioObjectType);
    PrintLine(out, d, "samplingFrequencyIndex: %d", audio.samplingFrequencyIndex);
    PrintLine(out, d, "samplingFrequency: %d", audio.samplingFrequency);
    PrintLine(out, d, "channelConfiguration: %d", audio.channelConfiguration);
    if (audio.channelConfiguration == 0)
        PrintLine(out, d, "!! channelConfiguration !! ");
    PrintLine(out, d, "frameLengthFlag: %d", ga.frameLengthFlag);
    PrintLine(out, d, "dependsOnCoreCoder: %d", ga.dependsOnCoreCoder);
    PrintLine(out, d, "coreCoderDelay: %d", ga.coreCoderDelay);
    PrintLine(out, d, "extensionFlag: %d", ga.extensionFlag);
    PrintLine(out, d, "layerNr: %d", ga.layerNr);
    PrintLine(out, d, "numOfSubFrame: %d", ga.numOfSubFrame);
    PrintLine(out, d, "layer_length: %d", ga.layer_length);
    PrintLine(out, d, "aacSectionDataResilienceFlag: %d", ga.aacSectionDataResilienceFlag);
    PrintLine(out, d, "aacScalefactorDataResilienceFlag: %d", ga.aacScalefactorDataResilienceFlag);
    PrintLine(out, d, "aacSpectralDataResilienceFlag: %d", ga.aacSpectralDataResilienceFlag);
    PrintLine(out, d, "predefined: %d", SLConfigDescriptor.predefined);
}

} // namespace Tavro::MovParserLib
