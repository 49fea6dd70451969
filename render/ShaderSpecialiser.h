// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Turns uniforms that hold one value into constants of the shader text, so that the driver's
// compiler folds away what they control. The pixels stay the same; only the cost falls.

#include <QByteArray>
#include <QVector>

/// A uniform and the value that it holds: one float, or the sixteen of a mat4 in column order.
struct UniformConstant
{
    QByteArray name;
    QVector<float> value;
};

namespace ShaderSpecialiser {

/// The panorama's grading controls at rest: uColorMatrix the identity, all others 0.
QVector<UniformConstant> gradingConstants();

/// True for the limits of a full sphere, compared exactly: only then is the re-mapping of partial
/// panoramas the identity. Angles in radians.
bool isFullSphere(float yawMin, float yawMax, float pitchMin, float pitchMax);

/// uYawMin, uYawMax, uPitchMin and uPitchMax of a full sphere.
QVector<UniformConstant> fullSphereConstants();

/// The fragment text in which each uniform of the list is a constant of that value. The caller
/// compiles anew from the full text when a value changes; setting a specialised uniform by name or
/// by location -1 does nothing. Names that the text does not declare, values of another size than
/// the declared type and values that are not finite leave the text as it is.
QByteArray specialise(const QByteArray &fragment, const QVector<UniformConstant> &constants);

} // namespace ShaderSpecialiser
