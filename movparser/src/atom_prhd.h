// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `prhd`: the orientation in which the sphere is to be shown first.

#include "movparser/src/mov_full_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class sphericalProjectionHeaderAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("prhd");

    sphericalProjectionHeaderAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    // 16.16 fixed point degrees.
    int32_t pose_yaw_degrees = 0;
    int32_t pose_pitch_degrees = 0;
    int32_t pose_roll_degrees = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.pose_yaw_degrees, self.pose_pitch_degrees, self.pose_roll_degrees);
    }

    /// The pose in whole degrees: fractions are cut off towards zero. Null pointers are passed
    /// over.
    void GetPose(float *yaw, float *pitch, float *roll) const;

    /// Degrees, brought into -180 to 180, -90 to 90 and -180 to 180.
    void SetPose(float yaw, float pitch, float roll);
};

} // namespace Tavro::MovParserLib
