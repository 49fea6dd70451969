// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Makes the panorama's program cheaper without changing its pixels. The builder's texts serve every
// case; most of what they compute is known before the draw. Where the processor draws this halves
// the cost of a frame: there each uniform that a fragment reads costs as much as a dozen
// operations. Elsewhere it is less work all the same, so nothing switches it off.

#include <QByteArray>
#include <QVector>

/// A uniform and the value that it holds: one float, or the sixteen of a mat4 in column order.
struct UniformConstant
{
    QByteArray name;
    QVector<float> value;
};

/// The texts of one program.
struct ShaderTexts
{
    QByteArray vertex;
    QByteArray fragment;
};

namespace ShaderSpecialiser {

/// The panorama's grading controls at rest: uColorMatrix the identity, all others 0.
QVector<UniformConstant> gradingConstants();

/// True for the limits of a full sphere, compared exactly: only then is the re-mapping of partial
/// panoramas the identity. Angles in radians.
bool isFullSphere(float yawMin, float yawMax, float pitchMin, float pitchMax);

/// uYawMin, uYawMax, uPitchMin and uPitchMax of a full sphere.
QVector<UniformConstant> fullSphereConstants();

/// The fragment text in which each uniform of the list is a constant of that value, so that the
/// driver's compiler folds away what it controls. The caller compiles anew from the full text when
/// a value changes; setting a specialised uniform by name or by location -1 does nothing. Names
/// that the text does not declare, values of another size than the declared type and values that
/// are not finite leave the text as it is.
QByteArray specialise(const QByteArray &fragment, const QVector<UniformConstant> &constants);

/// The same picture with the work that is linear over the quad done at its corners, and the angles
/// by shorter series. Holds for a uMatViewInverse that is a rotation and for the unit quad whose
/// `texture` runs from 0 to 1. Uniforms keep their names and meanings. With \a fullSphere the
/// limits have been specialised to those of a full sphere; where its picture fills the whole view,
/// the text that comes back discards nothing. Texts without a known piece come back unchanged.
ShaderTexts streamline(const ShaderTexts &texts, bool fullSphere);

} // namespace ShaderSpecialiser
