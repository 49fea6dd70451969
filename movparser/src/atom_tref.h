// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `tref`: which other tracks a track belongs to, by kind of relation.

#include "movparser/src/mov_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

/// One relation: its own type is the kind, its payload the track numbers.
class TrackReferenceTypeAtom : public MovAtom
{
public:
    TrackReferenceTypeAtom() = default;
    TrackReferenceTypeAtom(uint32_t kind, std::vector<uint32_t> tracks);

    /// Keeps the code of the preamble, so that a zero size ends the list.
    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    std::vector<uint32_t> trackIds;
};

class TrackReferenceAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("tref");

    TrackReferenceAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The relation of this kind, or null.
    const TrackReferenceTypeAtom *Find(uint32_t kind) const;

    std::vector<TrackReferenceTypeAtom> references;
};

} // namespace Tavro::MovParserLib
