// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The entry of a telemetry track.

#include "movparser/src/sample_description.h"

namespace Tavro::MovParserLib {

class TavroMetadataSampleDescription : public SampleDescription
{
public:
    using SampleDescription::operator=;
    uint64_t GetSize() const override;
    [[nodiscard]] MovAtom::Error Read(FileBuffer &buffer) override;
    [[nodiscard]] MovAtom::Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    std::unique_ptr<SampleDescription> Clone() const override;

    static constexpr uint32_t kDataFormat = FourCC("tvmd");

    TavroMetadataSampleDescription() { data_format = kDataFormat; }

    uint32_t value = 0; ///< Its meaning is not established.
};

} // namespace Tavro::MovParserLib
