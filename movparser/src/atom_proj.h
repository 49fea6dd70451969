// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `proj`: how the sphere lies in the frame, and its first orientation. Other children are dropped.

#include "movparser/src/atom_cbmp.h"
#include "movparser/src/atom_children.h"
#include "movparser/src/atom_equi.h"
#include "movparser/src/atom_prhd.h"
#include "movparser/src/mov_atom.h"

namespace Tavro::MovParserLib {

/// What the library answers to the question for a projection.
enum Projection : uint32_t {
    kProjectionUnknown = 0,
    kProjectionEquirectangular = 1,
    kProjectionCubemap = 256
};

class sphericalProjectionAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("proj");

    sphericalProjectionAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    sphericalProjectionHeaderAtom header;
    AtomPtr<sphericalEquiAtom> equi;
    AtomPtr<sphericalCubeAtom> cube;

    /// Unknown, equirectangular (also when a cube map stands beside it) or cube map.
    uint32_t GetProjection() const;

    /// Makes the projection a cube map and drops the other one.
    void SetCube(uint32_t layout, uint32_t padding);

    /// Makes the projection equirectangular, with the crop of each side, and drops the other one.
    void SetEqui(uint32_t top, uint32_t bottom, uint32_t left, uint32_t right);
};

} // namespace Tavro::MovParserLib
