// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `SA3D`: how the channels of a sound track carry a sound field.

#include "movparser/src/mov_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

class spatialAudioAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("SA3D");

    spatialAudioAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint8_t version = 0;
    uint8_t ambisonic_type = 0;
    uint32_t ambisonic_order = 0;
    uint8_t ambisonic_channel_ordering = 0;
    uint8_t ambisonic_normalization = 0;
    uint32_t num_channels = 0;
    std::vector<uint32_t> channel_map; ///< Empty when there is none yet: Write() makes one then.

private:
    /// The number of channels that Write() stores: with an order it follows from the order, so that
    /// the size is right before the first write too.
    uint32_t WrittenChannels() const;
};

} // namespace Tavro::MovParserLib
