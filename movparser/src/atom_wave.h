// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `wave`: what a decoder of compressed sound is told in QuickTime files.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_enda.h"
#include "movparser/src/atom_frma.h"
#include "movparser/src/generic_sound_compression_atom.h"
#include "movparser/src/mov_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

class WaveAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("wave");

    WaveAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    AtomPtr<FormatAtom> format;
    AtomPtr<EndianAtom> endian;
    std::vector<GenericSoundCompressionAtom> settings; ///< In file order.
};

} // namespace Tavro::MovParserLib
