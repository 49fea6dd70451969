// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The camera's angles and matrices. Angles are radians. The camera looks along minus z with y up;
// a growing yaw turns it towards plus x, a growing pitch turns it down.

#include <QMatrix4x4>

namespace CameraMath {

constexpr float kRadiansPerDegree = 0.017453292F;

/// Yaw, pitch and roll in radians.
struct EulerAngles
{
    float yaw = 0;
    float pitch = 0;
    float roll = 0;
};

/// Wraps an angle into the interval from minus pi (included) to pi. What is no number, as a device
/// or a datagram may send it, becomes 0.
float wrapAngle(float radians);

/// The rotation by roll about z, then pitch about x, then yaw about y.
QMatrix4x4 matrixFromEuler(const EulerAngles &angles);

/// The inverse of matrixFromEuler(). With the camera straight up or down, yaw and roll turn about
/// the same axis; then yaw is reported as a quarter turn and the remaining angle as pitch.
EulerAngles eulerFromMatrix(const QMatrix4x4 &matrix);

} // namespace CameraMath
