// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The entry of a time code track.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_name.h"
#include "movparser/src/sample_description.h"

namespace Tavro::MovParserLib {

class TimeCodeSampleDescription : public SampleDescription
{
public:
    using SampleDescription::operator=;
    uint64_t GetSize() const override;
    [[nodiscard]] MovAtom::Error Read(FileBuffer &buffer) override;
    [[nodiscard]] MovAtom::Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    std::unique_ptr<SampleDescription> Clone() const override;

    uint32_t timeCodeReserved = 0;
    uint32_t flags = 0;
    uint32_t timeScale = 0; ///< Units in a second.
    uint32_t frameDuration = 0; ///< Of a frame, in those units.
    uint8_t numberOfFrames = 0; ///< In a second.
    uint8_t frameReserved = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.timeCodeReserved, self.flags, self.timeScale, self.frameDuration,
                        self.numberOfFrames, self.frameReserved);
    }

    AtomPtr<NameAtom> name;
};

} // namespace Tavro::MovParserLib
