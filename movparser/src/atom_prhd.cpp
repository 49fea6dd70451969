// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_prhd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>
#include <cmath>

namespace Tavro::MovParserLib {

MovAtom::Error sphericalProjectionHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error sphericalProjectionHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void sphericalProjectionHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "sphericalProjectionHeaderAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "pose_yaw_degrees: %d", pose_yaw_degrees);
    PrintLine(out, block.Depth(), "pose_pitch_degrees: %d", pose_pitch_degrees);
    PrintLine(out, block.Depth(), "pose_roll_degrees: %d", pose_roll_degrees);
}

uint64_t sphericalProjectionHeaderAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this));
}

void sphericalProjectionHeaderAtom::GetPose(float *yaw, float *pitch, float *roll) const
{
    // The camera's start orientation is kept in whole degrees; the constant is 1/65536.
    const auto wholeDegrees = [](int32_t fixed, float *degrees) {
        if (degrees)
            *degrees = std::trunc(static_cast<float>(fixed) * 1.5258789e-5f);
    };
    wholeDegrees(pose_yaw_degrees, yaw);
    wholeDegrees(pose_pitch_degrees, pitch);
    wholeDegrees(pose_roll_degrees, roll);
}

void sphericalProjectionHeaderAtom::SetPose(float yaw, float pitch, float roll)
{
    const auto fixedPoint = [](float degrees, float limit) {
        if (std::isnan(degrees))
            return 0;
        return static_cast<int32_t>(std::clamp(degrees, -limit, limit) * 65536.0f);
    };
    pose_yaw_degrees = fixedPoint(yaw, 180.0f);
    pose_pitch_degrees = fixedPoint(pitch, 90.0f);
    pose_roll_degrees = fixedPoint(roll, 180.0f);
}

} // namespace Tavro::MovParserLib
