// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `TUSI`: which shot of a camera rig the file belongs to.

#include "movparser/src/mov_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

struct TavroRigShot
{
    uint32_t orbis_shot_count = 0; ///< In no byte of the file: 0 after reading.
    uint64_t rig_primary_camera_esn = 0;
    uint32_t capture_start_timstamp = 0;
    uint16_t chapter_number = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.rig_primary_camera_esn, self.capture_start_timstamp,
                        self.chapter_number);
    }
};

class TavroCameraTUSIAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("TUSI");

    TavroCameraTUSIAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The only size that is accepted and written.
    static constexpr uint64_t kTotalSize = 24;

    TavroRigShot record;
};

} // namespace Tavro::MovParserLib
