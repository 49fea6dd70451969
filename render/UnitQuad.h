// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The quad that every full picture is drawn with.

#include <QMatrix4x4>

namespace UnitQuad {

/// Four corners as a fan: both the positions and the texture coordinates.
inline constexpr float kCorners[] = {0, 0, 0, 1, 1, 1, 1, 0};

/// Places the quad exactly on the viewport, y up.
inline QMatrix4x4 matrix()
{
    QMatrix4x4 matrix;
    matrix.perspective(90, 1, 0.01F, 100);
    matrix.translate(0, 0, -0.5F);
    matrix.translate(-0.5F, -0.5F, 0);
    return matrix;
}

} // namespace UnitQuad
