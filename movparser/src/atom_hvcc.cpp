// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_hvcc.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cinttypes>
#include <tuple>

namespace Tavro::MovParserLib {

namespace {

// The layout in front of the arrays: numbers of whole bytes, some of which pack several fields. The
// bits beside the fields are reserved and 1.
struct PackedRecord
{
    uint8_t version = 0;
    uint8_t profile = 0;
    uint32_t compatibility = 0;
    uint16_t constraintsHigh = 0;
    uint32_t constraintsLow = 0;
    uint8_t level = 0;
    uint16_t segmentation = 0;
    uint8_t parallelism = 0;
    uint8_t chroma = 0;
    uint8_t lumaDepth = 0;
    uint8_t chromaDepth = 0;
    uint16_t frameRate = 0;
    uint8_t layers = 0;
    uint8_t arrayCount = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.version, self.profile, self.compatibility, self.constraintsHigh,
                        self.constraintsLow, self.level, self.segmentation, self.parallelism,
                        self.chroma, self.lumaDepth, self.chromaDepth, self.frameRate, self.layers,
                        self.arrayCount);
    }
};

uint8_t Byte(unsigned value)
{
    return static_cast<uint8_t>(value);
}

MovAtom::Error ReadArray(FileBuffer &buffer, HVCCArray *array)
{
    uint8_t kind = 0;
    uint16_t count = 0;
    if (ReadFields(buffer, std::tie(kind, count)) != MovAtom::ERROR_OKAY
        || count > buffer.BytesLeft() / sizeof(uint16_t))
        return MovAtom::ERROR_ATOM_READ_FAILED;
    array->array_completeness = (kind & 0x80) != 0;
    array->NAL_unit_type = kind & 0x3f;
    if (MakeRoom(buffer, count * sizeof(std::vector<uint8_t>), [&] { array->nalus.resize(count); })
        != MovAtom::ERROR_OKAY)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    for (std::vector<uint8_t> &nalu : array->nalus) {
        uint16_t length = 0;
        if (ReadNumber(buffer, &length) != MovAtom::ERROR_OKAY
            || ReadBytes(buffer, length, &nalu) != MovAtom::ERROR_OKAY)
            return MovAtom::ERROR_ATOM_READ_FAILED;
    }
    return MovAtom::ERROR_OKAY;
}

MovAtom::Error WriteArray(FileBuffer &buffer, const HVCCArray &array)
{
    if (array.nalus.size() > UINT16_MAX)
        return MovAtom::ERROR_ATOM_WRITE_FAILED;
    MOV_WRITE(WriteNumber(
        buffer, Byte((array.array_completeness ? 0x80U : 0U) | (array.NAL_unit_type & 0x3fU))));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint16_t>(array.nalus.size())));
    for (const std::vector<uint8_t> &nalu : array.nalus) {
        if (nalu.size() > UINT16_MAX)
            return MovAtom::ERROR_ATOM_WRITE_FAILED;
        MOV_WRITE(WriteNumber(buffer, static_cast<uint16_t>(nalu.size())));
        MOV_WRITE(WriteBytes(buffer, nalu.data(), nalu.size()));
    }
    return MovAtom::ERROR_OKAY;
}

} // namespace

MovAtom::Error HVCCAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    PackedRecord packed;
    arrays.clear();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, PackedRecord::Fields(packed)));
    configurationVersion = packed.version;
    general_profile_space = packed.profile >> 6;
    general_tier_flag = (packed.profile & 0x20) != 0;
    general_profile_idc = packed.profile & 0x1f;
    general_profile_compatibility_flags = packed.compatibility;
    general_constraint_indicator_flags =
        static_cast<uint64_t>(packed.constraintsHigh) << 32 | packed.constraintsLow;
    general_level_idc = packed.level;
    min_spatial_segmentation_idc = packed.segmentation & 0xfff;
    parallelismType = packed.parallelism & 3;
    chromaFormat = packed.chroma & 3;
    bitDepthLumaMinus8 = packed.lumaDepth & 7;
    bitDepthChromaMinus8 = packed.chromaDepth & 7;
    avgFrameRate = packed.frameRate;
    constantFrameRate = packed.layers >> 6;
    numTemporalLayers = (packed.layers >> 3) & 7;
    temporalIdNested = (packed.layers & 4) != 0;
    lengthSizeMinusOne = packed.layers & 3;
    for (uint8_t i = 0; i < packed.arrayCount; ++i) {
        HVCCArray array;
        MOV_READ(scope, ReadArray(buffer, &array));
        MOV_READ(scope,
                 MakeRoom(buffer, sizeof array, [&] { arrays.push_back(std::move(array)); }));
    }
    return scope.Finish(size);
}

MovAtom::Error HVCCAtom::Write(FileBuffer &buffer)
{
    if (arrays.size() > UINT8_MAX)
        return ERROR_ATOM_WRITE_FAILED;
    PackedRecord packed;
    packed.version = configurationVersion;
    packed.profile = Byte((general_profile_space & 3U) << 6 | (general_tier_flag ? 0x20U : 0U)
                          | (general_profile_idc & 0x1fU));
    packed.compatibility = general_profile_compatibility_flags;
    packed.constraintsHigh = static_cast<uint16_t>(general_constraint_indicator_flags >> 32);
    packed.constraintsLow = static_cast<uint32_t>(general_constraint_indicator_flags);
    packed.level = general_level_idc;
    packed.segmentation = static_cast<uint16_t>(0xf000U | (min_spatial_segmentation_idc & 0xfffU));
    packed.parallelism = Byte(0xfcU | (parallelismType & 3U));
    packed.chroma = Byte(0xfcU | (chromaFormat & 3U));
    packed.lumaDepth = Byte(0xf8U | (bitDepthLumaMinus8 & 7U));
    packed.chromaDepth = Byte(0xf8U | (bitDepthChromaMinus8 & 7U));
    packed.frameRate = avgFrameRate;
    packed.layers = Byte((constantFrameRate & 3U) << 6 | (numTemporalLayers & 7U) << 3
                         | (temporalIdNested ? 4U : 0U) | (lengthSizeMinusOne & 3U));
    packed.arrayCount = Byte(static_cast<unsigned>(arrays.size()));
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer, PackedRecord::Fields(packed)));
    for (const HVCCArray &array : arrays)
        MOV_WRITE(WriteArray(buffer, array));
    return ERROR_OKAY;
}

void HVCCAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "HVCCAtom");
    const uint32_t d = block.Depth();
    MovAtom::PrintToString(out, d);
    PrintLine(out, d, "configurationVersion: %d", configurationVersion);
    PrintLine(out, d, "general_profile_space: %d", general_profile_space);
    PrintLine(out, d, "general_tier_flag: %d", general_tier_flag);
    PrintLine(out, d, "general_profile_idc: %d", general_profile_idc);
    PrintLine(out, d, "general_profile_compatibility_flags: %08x",
              general_profile_compatibility_flags);
    PrintLine(out, d, "general_constraint_indicator_flags: %012" PRIx64,
              general_constraint_indicator_flags);
    PrintLine(out, d, "general_level_idc: %d", general_level_idc);
    PrintLine(out, d, "min_spatial_segmentation_idc: %d", min_spatial_segmentation_idc);
    PrintLine(out, d, "parallelismType: %d", parallelismType);
    PrintLine(out, d, "chromaFormat: %d", chromaFormat);
    PrintLine(out, d, "bitDepthLumaMinus8: %d", bitDepthLumaMinus8);
    PrintLine(out, d, "bitDepthChromaMinus8: %d", bitDepthChromaMinus8);
    PrintLine(out, d, "avgFrameRate: %d", avgFrameRate);
    PrintLine(out, d, "constantFrameRate: %d", constantFrameRate);
    PrintLine(out, d, "numTemporalLayers: %d", numTemporalLayers);
    PrintLine(out, d, "temporalIdNested: %d", temporalIdNested);
    PrintLine(out, d, "lengthSizeMinusOne: %d", lengthSizeMinusOne);
    PrintLine(out, d, "numOfArrays: %zu", arrays.size());
    for (const HVCCArray &array : arrays) {
        PrintLine(out, d, "array_completeness: %d", array.array_completeness);
        PrintLine(out, d, "NAL_unit_type: %d", array.NAL_unit_type);
        PrintLine(out, d, "numNalus: %zu", array.nalus.size());
        for (const std::vector<uint8_t> &nalu : array.nalus) {
            PrintLine(out, d, "nalUnitLength: %zu", nalu.size());
            PrintTable(out, d, "nalUnit: ", nalu,
                       [out](uint8_t byte) { PrintText(out, "%02x ", byte); });
        }
    }
}

uint64_t HVCCAtom::GetSize() const
{
    PackedRecord packed;
    uint64_t bytes = MovAtom::GetSize() + SizeOfFields(PackedRecord::Fields(packed));
    for (const HVCCArray &array : arrays) {
        bytes += sizeof(uint8_t) + sizeof(uint16_t);
        for (const std::vector<uint8_t> &nalu : array.nalus)
            bytes += sizeof(uint16_t) + nalu.size();
    }
    return bytes;
}

} // namespace Tavro::MovParserLib
