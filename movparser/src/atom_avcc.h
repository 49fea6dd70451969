// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `avcC`: what a decoder of H.264 needs before the first sample, in the layout of ISO/IEC 14496-15.
// All parameter sets are walked, the first of each kind is kept and written.

#include "movparser/src/mov_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

class AVCCAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("avcC");

    AVCCAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint8_t configurationVersion = 1;
    uint8_t AVCProfileIndication = 0;
    uint8_t profile_compatibility = 0;
    uint8_t AVCLevelIndication = 0;
    uint8_t lengthSizeMinusOne = 3;
    uint8_t numOfSequenceParameterSets = 0; ///< As in the file, until Write() brings it to 0 or 1.
    uint8_t numOfPictureParameterSets = 0; ///< The same.

    uint16_t GetSequenceParameterSetLength() const
    {
        return static_cast<uint16_t>(sequenceParameterSet.size());
    }

    uint16_t GetPictureParameterSetLength() const
    {
        return static_cast<uint16_t>(pictureParameterSet.size());
    }

    std::vector<uint8_t> sequenceParameterSet; ///< At most 65535 bytes.
    std::vector<uint8_t> pictureParameterSet;
};

} // namespace Tavro::MovParserLib
