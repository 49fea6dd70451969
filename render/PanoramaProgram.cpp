// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/PanoramaProgram.h"

#include "render/ShaderProgram.h"
#include "render/ShaderSpecialiser.h"
#include "render/UnitQuad.h"
#include "render/VxShaderCodeBuilder.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QVector4D>

#include <cmath>

namespace {

/// Lengths and right angles are kept, up to what single precision loses. The streamlined shaders
/// take a turned ray's length from the projection, and near the poles make a root of its error.
bool isRotation(const QMatrix4x4 &matrix)
{
    constexpr float kTolerance = 1e-5F;
    for (int i = 0; i < 4; ++i) {
        for (int j = i; j < 4; ++j) {
            const float product = QVector4D::dotProduct(matrix.column(i), matrix.column(j));
            if (std::abs(product - (i == j ? 1.0F : 0.0F)) > kTolerance)
                return false;
        }
    }
    return matrix(3, 3) == 1.0F;
}

} // namespace

ShaderAssumptions PanoramaUniforms::assumptions() const
{
    ShaderAssumptions result;
    result.setFlag(ShaderAssumption::FullSphere,
                   ShaderSpecialiser::isFullSphere(yawMin, yawMax, pitchMin, pitchMax));
    result.setFlag(ShaderAssumption::RotatesOnly, isRotation(matViewInverse));
    return result;
}

PanoramaProgram::~PanoramaProgram() = default;

std::unique_ptr<PanoramaProgram> PanoramaProgram::build(const char *name,
                                                        const QByteArray &fragmentSource,
                                                        ShaderAssumptions assumptions)
{
    QVector<UniformConstant> constants = ShaderSpecialiser::gradingConstants();
    const bool fullSphere = assumptions.testFlag(ShaderAssumption::FullSphere);
    if (fullSphere)
        constants += ShaderSpecialiser::fullSphereConstants();
    ShaderTexts texts{VxShaderCodeBuilder::vertexShaderSource(),
                      ShaderSpecialiser::specialise(fragmentSource, constants)};
    if (assumptions & ShaderAssumption::RotatesOnly)
        texts = ShaderSpecialiser::streamline(texts, fullSphere);
    std::unique_ptr<QOpenGLShaderProgram> program(
        ShaderProgram::build(name, texts.vertex, texts.fragment));
    if (!program)
        return nullptr;
    std::unique_ptr<PanoramaProgram> result(new PanoramaProgram);
    result->m_program = std::move(program);
    result->m_fillsViewport = !texts.fragment.contains("discard");
    result->lookUpLocations();
    return result;
}

void PanoramaProgram::lookUpLocations()
{
    m_vertex = m_program->attributeLocation("vertex");
    m_texture = m_program->attributeLocation("texture");
    m_matViewInverse = m_program->uniformLocation("uMatViewInverse");
    m_eye = m_program->uniformLocation("uEye");
    m_viewportSize = m_program->uniformLocation("uViewportSize");
    m_viewportSizeMin = m_program->uniformLocation("uViewportSizeMin");
    m_viewportSizeRatio = m_program->uniformLocation("uViewportSizeRatio");
    m_fov = m_program->uniformLocation("uFov");
    m_yawMin = m_program->uniformLocation("uYawMin");
    m_yawMax = m_program->uniformLocation("uYawMax");
    m_pitchMin = m_program->uniformLocation("uPitchMin");
    m_pitchMax = m_program->uniformLocation("uPitchMax");
    m_cameraYaw = m_program->uniformLocation("uCameraYaw");
    m_cameraPitch = m_program->uniformLocation("uCameraPitch");
    m_projScale = m_program->uniformLocation("uProjScale");
    m_projectionDistance = m_program->uniformLocation("uProjectionDistance");

    // These hold for the life of the program.
    m_program->bind();
    m_program->setUniformValue("matrix", UnitQuad::matrix());
    m_program->setUniformValue("uSampler", 0);
    m_program->release();

    // The switch of the fixed-function pipeline exists in compatibility contexts only.
    const QOpenGLContext *context = QOpenGLContext::currentContext();
    m_enableTexture2D =
        !context->isOpenGLES() && context->format().profile() != QSurfaceFormat::CoreProfile;
}

void PanoramaProgram::draw(QOpenGLFunctions *gl, const PanoramaUniforms &uniforms, int eye,
                           unsigned texture)
{
    m_program->bind();
    const auto vector = [this](int location, const std::array<float, 2> &value) {
        m_program->setUniformValue(location, value[0], value[1]);
    };
    m_program->setUniformValue(m_matViewInverse, uniforms.matViewInverse);
    m_program->setUniformValue(m_eye, eye);
    vector(m_viewportSize, uniforms.viewportSize);
    vector(m_viewportSizeMin, uniforms.viewportSizeMin);
    vector(m_viewportSizeRatio, uniforms.viewportSizeRatio);
    m_program->setUniformValue(m_fov, uniforms.fov);
    m_program->setUniformValue(m_yawMin, uniforms.yawMin);
    m_program->setUniformValue(m_yawMax, uniforms.yawMax);
    m_program->setUniformValue(m_pitchMin, uniforms.pitchMin);
    m_program->setUniformValue(m_pitchMax, uniforms.pitchMax);
    m_program->setUniformValue(m_cameraYaw, uniforms.yaw);
    m_program->setUniformValue(m_cameraPitch, uniforms.pitch);
    const ProjectionParameters lens = VxShaderCodeBuilder::projectionParameters(uniforms.fov);
    m_program->setUniformValue(m_projScale, lens.scale);
    m_program->setUniformValue(m_projectionDistance, lens.distance);

    m_program->enableAttributeArray(m_vertex);
    m_program->enableAttributeArray(m_texture);
    m_program->setAttributeArray(m_vertex, UnitQuad::kCorners, 2);
    m_program->setAttributeArray(m_texture, UnitQuad::kCorners, 2);

    gl->glActiveTexture(GL_TEXTURE0);
    if (m_enableTexture2D)
        gl->glEnable(GL_TEXTURE_2D);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    // On every draw: the texture belongs to its maker, who may have set others.
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl->glDrawArrays(GL_TRIANGLE_FAN, 0, 4);

    m_program->disableAttributeArray(m_vertex);
    m_program->disableAttributeArray(m_texture);
    m_program->release();
}
