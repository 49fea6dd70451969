// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `gmhd`: the header of media that are neither video nor sound.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_gmin.h"
#include "movparser/src/atom_tmcd.h"
#include "movparser/src/atom_tvmd.h"

namespace Tavro::MovParserLib {

class BaseMediaInformationHeaderAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("gmhd");

    BaseMediaInformationHeaderAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    AtomPtr<BaseMediaInfoAtom> mediaInfo; ///< May be absent, as in real metadata tracks.
    AtomPtr<TimeCodeMediaHandlerAtom> timeCodeHandler; ///< In timecode tracks.
    AtomPtr<TVMFHandlerAtom> telemetryHandler; ///< In telemetry tracks.
};

} // namespace Tavro::MovParserLib
