// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CameraMath.h"

#include <cmath>

namespace CameraMath {

namespace {

constexpr double kPi = 3.141592653589793;
// Twice pi in single precision, so that a wrapped value is exact in the type that stores it.
constexpr double kTwoPi = 6.2831854820251465;
constexpr float kQuarterTurn = 1.5707963F;

} // namespace

float wrapAngle(float radians)
{
    if (!std::isfinite(radians))
        return 0;
    const auto turns = static_cast<float>(std::floor((double(radians) + kPi) / kTwoPi));
    return radians - static_cast<float>(kTwoPi) * turns;
}

QMatrix4x4 matrixFromEuler(const EulerAngles &angles)
{
    const auto sy = static_cast<float>(std::sin(double(angles.yaw)));
    const auto cy = static_cast<float>(std::cos(double(angles.yaw)));
    const auto sp = static_cast<float>(std::sin(double(angles.pitch)));
    const auto cp = static_cast<float>(std::cos(double(angles.pitch)));
    const auto sr = static_cast<float>(std::sin(double(angles.roll)));
    const auto cr = static_cast<float>(std::cos(double(angles.roll)));

    // The constructor takes rows; each line below is therefore one row of the column-major data.
    return QMatrix4x4(cr * cy + sr * sp * sy, cr * sp * sy - sr * cy, -sy * cp, 0, sr * cp, cr * cp,
                      sp, 0, cr * sy - sr * sp * cy, -sr * sy - cr * sp * cy, cp * cy, 0, 0, 0, 0,
                      1);
}

EulerAngles eulerFromMatrix(const QMatrix4x4 &matrix)
{
    const float *m = matrix.constData();
    if (m[9] >= 1)
        return {-kQuarterTurn, std::atan2(-m[4], m[0]), 0};
    if (m[9] <= -1)
        return {kQuarterTurn, std::atan2(-m[4], m[0]), 0};
    return {std::atan2(-m[8], m[10]), std::asin(m[9]), std::atan2(m[1], m[5])};
}

} // namespace CameraMath
