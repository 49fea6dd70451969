// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `hvcC`: what a decoder of HEVC needs before the first sample, in the layout of ISO/IEC 14496-15.

#include "movparser/src/mov_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

/// The parameter sets of one kind.
struct HVCCArray
{
    bool array_completeness = false;
    uint8_t NAL_unit_type = 0; ///< 6 bits.
    std::vector<std::vector<uint8_t>> nalus; ///< At most 65535, of at most 65535 bytes each.
};

class HVCCAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("hvcC");

    HVCCAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint8_t configurationVersion = 1;
    uint8_t general_profile_space = 0; ///< 2 bits.
    bool general_tier_flag = false;
    uint8_t general_profile_idc = 0; ///< 5 bits.
    uint32_t general_profile_compatibility_flags = 0;
    uint64_t general_constraint_indicator_flags = 0; ///< 48 bits.
    uint8_t general_level_idc = 0;
    uint16_t min_spatial_segmentation_idc = 0; ///< 12 bits.
    uint8_t parallelismType = 0; ///< 2 bits.
    uint8_t chromaFormat = 0; ///< 2 bits.
    uint8_t bitDepthLumaMinus8 = 0; ///< 3 bits.
    uint8_t bitDepthChromaMinus8 = 0; ///< 3 bits.
    uint16_t avgFrameRate = 0; ///< In frames per 256 seconds.
    uint8_t constantFrameRate = 0; ///< 2 bits.
    uint8_t numTemporalLayers = 0; ///< 3 bits.
    bool temporalIdNested = false;
    uint8_t lengthSizeMinusOne = 3; ///< 2 bits.
    std::vector<HVCCArray> arrays; ///< At most 255.
};

} // namespace Tavro::MovParserLib
