// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/common/PanoramaQuad.h"

#include "render/ShaderProgram.h"
#include "render/UnitQuad.h"

#include <QMatrix4x4>
#include <QOpenGLFramebufferObject>
#include <QOpenGLShaderProgram>
#include <QVector2D>
#include <QtMath>

namespace {

QMatrix4x4 cameraMatrix(const PanoramaScene &scene)
{
    QMatrix4x4 matrix;
    matrix.rotate(float(qRadiansToDegrees(-scene.yaw)), 0, 1, 0);
    matrix.rotate(float(qRadiansToDegrees(-scene.pitch)), 1, 0, 0);
    matrix.rotate(float(qRadiansToDegrees(scene.roll)), 0, 0, 1);
    return matrix;
}

} // namespace

OffscreenContext::OffscreenContext()
{
    m_surface.create();
    m_current = m_context.create() && m_context.makeCurrent(&m_surface);
}

OffscreenContext::~OffscreenContext()
{
    m_context.doneCurrent();
}

std::unique_ptr<QOpenGLTexture> textureFrom(const QImage &image)
{
    auto texture = std::make_unique<QOpenGLTexture>(image, QOpenGLTexture::DontGenerateMipMaps);
    texture->setMinMagFilters(QOpenGLTexture::Linear, QOpenGLTexture::Linear);
    texture->setWrapMode(QOpenGLTexture::ClampToEdge);
    return texture;
}

PanoramaQuad::PanoramaQuad(const QByteArray &fragment, const QByteArray &vertex)
    : m_program(ShaderProgram::build("panorama", vertex, fragment))
{ }

PanoramaQuad::~PanoramaQuad() = default;

void PanoramaQuad::setUniforms(const PanoramaScene &scene, int eye)
{
    const float width = scene.eyeSize().width();
    const float height = scene.eyeSize().height();
    const float shorter = std::min(width, height);
    const float longer = std::max(width, height);
    const ProjectionParameters lens = VxShaderCodeBuilder::projectionParameters(float(scene.fov));

    m_program->bind();
    m_program->setUniformValue("matrix", UnitQuad::matrix());
    m_program->setUniformValue("uMatViewInverse", cameraMatrix(scene));
    m_program->setUniformValue("uSampler", 0);
    m_program->setUniformValue("uEye", eye);
    m_program->setUniformValue("uViewportSize", QVector2D(width, height));
    m_program->setUniformValue("uViewportSizeMin", QVector2D(shorter, shorter));
    m_program->setUniformValue("uViewportSizeRatio", QVector2D(longer / height, height / shorter));
    m_program->setUniformValue("uFov", float(scene.fov));
    m_program->setUniformValue("uYawMin", float(scene.yawMin));
    m_program->setUniformValue("uYawMax", float(scene.yawMax));
    m_program->setUniformValue("uPitchMin", float(scene.pitchMin));
    m_program->setUniformValue("uPitchMax", float(scene.pitchMax));
    m_program->setUniformValue("uColorMatrix", QMatrix4x4());
    for (const char *control : {"uBrightness", "uContrast", "uHue", "uSaturation", "uVibrance",
                                "uTime", "uVignettingRadius", "uVignettingAmount"})
        m_program->setUniformValue(control, 0.0F);
    m_program->setUniformValue("uScaleCorrector", 1.0F);
    m_program->setUniformValue("uCameraYaw", float(scene.yaw));
    m_program->setUniformValue("uCameraPitch", float(scene.limitedPitch()));
    m_program->setUniformValue("uProjScale", lens.scale);
    m_program->setUniformValue("uProjectionDistance", lens.distance);
}

void PanoramaQuad::draw(QOpenGLFunctions *gl, GLuint texture)
{
    m_program->bind();
    const int vertex = m_program->attributeLocation("vertex");
    const int place = m_program->attributeLocation("texture");
    for (const int attribute : {vertex, place}) {
        m_program->enableAttributeArray(attribute);
        m_program->setAttributeArray(attribute, UnitQuad::kCorners, 2);
    }
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    for (const int attribute : {vertex, place})
        m_program->disableAttributeArray(attribute);
    m_program->release();
}

QImage PanoramaQuad::picture(QOpenGLFunctions *gl, const PanoramaScene &scene, GLuint texture)
{
    QOpenGLFramebufferObject target(scene.item * scene.devicePixelRatio);
    target.bind();
    gl->glClearColor(0.1333333F, 0.1333333F, 0.1333333F, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    const QSize pixels = scene.eyePixels();
    for (int eye = 0; eye < (scene.splitView ? 2 : 1); ++eye) {
        gl->glViewport(eye * pixels.width(), 0, pixels.width(), pixels.height());
        setUniforms(scene, eye);
        draw(gl, texture);
    }
    return target.toImage();
}
