// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `sv3d`: what a sample description says about a panorama. Other children are dropped.

#include "movparser/src/atom_proj.h"
#include "movparser/src/atom_svhd.h"
#include "movparser/src/mov_atom.h"

namespace Tavro::MovParserLib {

class sphericalVideoAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("sv3d");

    sphericalVideoAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    sphericalVideoHeaderAtom header;
    sphericalProjectionAtom projection;

    uint32_t GetProjection() const { return projection.GetProjection(); }

    void SetCube(uint32_t layout, uint32_t padding) { projection.SetCube(layout, padding); }

    void SetEqui(uint32_t top, uint32_t bottom, uint32_t left, uint32_t right)
    {
        projection.SetEqui(top, bottom, left, right);
    }

    void GetPose(float *yaw, float *pitch, float *roll) const
    {
        projection.header.GetPose(yaw, pitch, roll);
    }

    void SetPose(float yaw, float pitch, float roll)
    {
        projection.header.SetPose(yaw, pitch, roll);
    }

    const std::string &GetMetadataSource() const { return header.metadata_source; }

    [[nodiscard]] Error SetMetadataSource(const std::string &text)
    {
        return header.SetMetadataSource(text);
    }
};

} // namespace Tavro::MovParserLib
