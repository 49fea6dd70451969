// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a panorama must look like, computed on the CPU in double precision from the geometry of the
// projections, and how two pictures compare. It shares nothing with the shaders but the names of
// the modes.

#include "render/VxShaderCodeBuilder.h"

#include <QImage>
#include <QPoint>
#include <QSize>

#include <cmath>

/// Everything that decides one picture of the panorama, but for the source.
struct PanoramaScene
{
    QSize item{320, 240}; ///< size of the whole view in item units
    double devicePixelRatio = 1;
    bool splitView = false; ///< one picture for each eye, side by side
    bool tv3dView = false; ///< with splitView: each eye's picture is squeezed to half its width

    int projectionSource = VxShaderCodeBuilder::EQUIRECTANGULAR;
    int projection = VxShaderCodeBuilder::TAVRO;
    int stereoMode = VxShaderCodeBuilder::STEREO_2D;
    int effect = VxShaderCodeBuilder::NO_EFFECT;
    int rotationSource = 0; ///< 2: a circular fisheye's lens axis lies along minus x
    bool invertedColors = false; ///< the source holds blue in its red channel
    bool flipY = false; ///< the source's first row is the lowest
    bool overlay = false; ///< the source is the interface, a plane of its own before the viewer

    // The camera: radians, and the field of view of the shorter side in degrees.
    double yaw = 0;
    double pitch = 0;
    double roll = 0;
    double fov = 90;

    // The source's angles, in radians.
    double yawMin = -M_PI;
    double yawMax = M_PI;
    double pitchMin = -M_PI / 2;
    double pitchMax = M_PI / 2;

    /// How far the camera of a flat picture is really turned up or down: not beyond its edges.
    double limitedPitch() const;
    /// One eye's area in item units, as its picture is laid out, and in device pixels.
    QSize eyeSize() const;
    QSize eyePixels() const;
};

namespace PanoramaReference {

/// The whole view in device pixels: the item's size times the ratio, top row first, opaque. What
/// no source reaches, and a column that two odd halves leave over, has the background's grey.
QImage render(const PanoramaScene &scene, const QImage &source);

/// A source without symmetry: smooth, seamless at its left and right edges, with a patch of pure
/// red, yellow, blue and green of differing sizes, one in each quadrant.
QImage testPanorama(QSize size);

/// How near two pictures of one size are.
struct Comparison
{
    double share = 0; ///< of the pixels, those within the tolerance in every channel
    int worst = 0; ///< largest difference of a channel
    QPoint worstAt;

    /// The numbers, for the message of a test.
    QByteArray text() const;
};

/// Compares the colours, not alpha. Pictures of different sizes share nothing.
Comparison compare(const QImage &actual, const QImage &expected, int tolerance = 8);

} // namespace PanoramaReference
