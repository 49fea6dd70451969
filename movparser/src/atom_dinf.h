// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `dinf`: where the media data lie.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_dref.h"

namespace Tavro::MovParserLib {

class DataInformationAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("dinf");

    DataInformationAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    AtomPtr<DataReferenceAtom> dataReference; ///< May be absent.
};

} // namespace Tavro::MovParserLib
