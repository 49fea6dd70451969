// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `tmcd`: the media header of a timecode track.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_tcmi.h"

namespace Tavro::MovParserLib {

class TimeCodeMediaHandlerAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("tmcd");

    TimeCodeMediaHandlerAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    AtomPtr<TimeCodeMediaInformationAtom> mediaInformation; ///< May be absent.
};

} // namespace Tavro::MovParserLib
