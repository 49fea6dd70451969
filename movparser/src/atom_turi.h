// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `TURI`: which part of a camera rig recorded the file.

#include "movparser/src/mov_atom.h"

#include <array>
#include <tuple>

namespace Tavro::MovParserLib {

struct TavroRigIdentity
{
    uint64_t rig_primary_node_esn = 0;
    uint8_t rig_type = 0;
    std::array<uint8_t, 3> rig_fw = {};
    uint16_t rig_size = 0;
    uint16_t node_id = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.rig_primary_node_esn, self.rig_type, self.rig_fw, self.rig_size,
                        self.node_id);
    }
};

class TavroCameraTURIAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("TURI");

    TavroCameraTURIAtom()
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

    TavroRigIdentity record;
};

} // namespace Tavro::MovParserLib
