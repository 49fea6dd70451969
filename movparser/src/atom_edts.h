// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `edts`: the edits of a track.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_elst.h"

namespace Tavro::MovParserLib {

class EditAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("edts");

    EditAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    AtomPtr<EditListAtom> editList; ///< May be absent.
};

} // namespace Tavro::MovParserLib
