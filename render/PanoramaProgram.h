// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A generated panorama shader, ready to draw: linked, with its locations looked up, and with the
// uniforms that hold one value through the whole program compiled in as constants.

#include <QByteArray>
#include <QMatrix4x4>

#include <array>
#include <memory>

class QOpenGLFunctions;
class QOpenGLShaderProgram;

/// What the uniforms hold for as long as a program is used.
enum class ShaderAssumption {
    FullSphere = 1, ///< the limits of the source are those of a full sphere
    RotatesOnly = 2 ///< matViewInverse is a rotation
};
Q_DECLARE_FLAGS(ShaderAssumptions, ShaderAssumption)
Q_DECLARE_OPERATORS_FOR_FLAGS(ShaderAssumptions)

/// What one eye's picture depends on beside the shader and the texture. Sizes are in item units,
/// angles in radians, the field of view in degrees of the shorter viewport side.
struct PanoramaUniforms
{
    QMatrix4x4 matViewInverse;
    std::array<float, 2> viewportSize{};
    std::array<float, 2> viewportSizeMin{};
    std::array<float, 2> viewportSizeRatio{};
    float fov = 0;
    float yaw = 0;
    float pitch = 0;
    float yawMin = 0;
    float yawMax = 0;
    float pitchMin = 0;
    float pitchMax = 0;

    /// All that holds for these values.
    ShaderAssumptions assumptions() const;
};

/// Draws the unit quad over the viewport with a shader of VxShaderCodeBuilder. All members need
/// the context in which the program was built, or one that shares with it.
class PanoramaProgram
{
public:
    /// Compiles and links; null when that fails, which is logged under \a name. What is assumed
    /// makes the shader cheaper, not the picture another one.
    static std::unique_ptr<PanoramaProgram>
    build(const char *name, const QByteArray &fragmentSource, ShaderAssumptions assumptions);
    ~PanoramaProgram();

    /// True if each pixel of the viewport is painted, whatever was there before.
    bool fillsViewport() const { return m_fillsViewport; }

    /// Draws \a texture for \a eye, 0 or 1, into the current framebuffer and viewport. Leaves
    /// texture unit 0 active and no program bound.
    void draw(QOpenGLFunctions *gl, const PanoramaUniforms &uniforms, int eye, unsigned texture);

private:
    PanoramaProgram() = default;
    void lookUpLocations();

    std::unique_ptr<QOpenGLShaderProgram> m_program;
    bool m_fillsViewport = false;
    bool m_enableTexture2D = false;
    int m_vertex = -1;
    int m_texture = -1;
    int m_matViewInverse = -1;
    int m_eye = -1;
    int m_viewportSize = -1;
    int m_viewportSizeMin = -1;
    int m_viewportSizeRatio = -1;
    int m_fov = -1;
    int m_yawMin = -1;
    int m_yawMax = -1;
    int m_pitchMin = -1;
    int m_pitchMax = -1;
    int m_cameraYaw = -1;
    int m_cameraPitch = -1;
    int m_projScale = -1;
    int m_projectionDistance = -1;
};
