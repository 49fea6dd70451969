// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `uuid`: the older form of spherical metadata, an XML document in the track. The identifier of the
// atom is not looked at: a `uuid` of another kind reads as a document that says nothing.

#include "movparser/src/atom_proj.h"
#include "movparser/src/mov_atom.h"

#include <array>
#include <string>
#include <string_view>

namespace Tavro::MovParserLib {

class sphericalVideoLegacyAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("uuid");

    sphericalVideoLegacyAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Whether the atom that was read is one of spherical metadata and not somebody else's.
    bool hasOwnIdentifier = true;
    std::string StitchingSoftware;
    std::string StereoMode = "mono";
    uint32_t SourceCount = 0;
    // Whole degrees. Written to the document but never read from one.
    int32_t pose_yaw_degrees = 0;
    int32_t pose_pitch_degrees = 0;
    int32_t pose_roll_degrees = 0;
    /// Top, bottom, left and right; not part of the document.
    std::array<uint32_t, 4> projection_bounds = {};

    void SetStitchingSoftware(const std::string &text) { StitchingSoftware = text.c_str(); }

    void SetSourceCount(uint32_t count) { SourceCount = count; }

    /// 0 none, 1 left-right, 2 top-bottom.
    uint32_t GetStereoMode() const;
    void SetStereoMode(uint32_t mode);

    /// Null pointers are passed over.
    void GetPose(float *yaw, float *pitch, float *roll) const;

    /// Fractions are cut off.
    void SetPose(float yaw, float pitch, float roll);

    void SetBounds(uint32_t top, uint32_t bottom, uint32_t left, uint32_t right)
    {
        projection_bounds = {top, bottom, left, right};
    }

    /// The older form knows one projection only.
    uint32_t GetProjection() const { return kProjectionEquirectangular; }

private:
    void TakeElements(std::string_view document);
    /// Hands out the XML document, without a terminator, part by part. It is written and measured
    /// through this one function, so that the two agree, and takes no memory.
    template <class Visit> void ForEachPart(Visit &&visit) const;
};

} // namespace Tavro::MovParserLib
