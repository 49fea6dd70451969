// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/VxShaderCodeBuilder.h"

#include "app/VxContext.h"
#include "render/ShaderFragments.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"

#include <QVariant>

#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;

QByteArray raySection(int projection, bool hmd)
{
    switch (static_cast<VxShaderCodeBuilder::ShaderProjection>(projection)) {
    case VxShaderCodeBuilder::RECTILINEAR:
        return QByteArray(ShaderFragments::kRayRectilinear)
            + (hmd ? ShaderFragments::kRayRectilinearHmd : "")
            + ShaderFragments::kRayRectilinearEnd;
    case VxShaderCodeBuilder::LITTLE_PLANET:
        return ShaderFragments::kRayLittlePlanet;
    case VxShaderCodeBuilder::FISHEYE:
        return ShaderFragments::kRayFisheye;
    case VxShaderCodeBuilder::TAVRO:
    case VxShaderCodeBuilder::LAST_VALUE_PROJECTION:
        break;
    }
    return ShaderFragments::kRayAdaptive;
}

QByteArray sourceSection(int projectionSource, int rotationSource, bool useAngularLimits)
{
    switch (static_cast<VxShaderCodeBuilder::InputProjection>(projectionSource)) {
    case VxShaderCodeBuilder::STANDARD:
        return ShaderFragments::kSourceStandard;
    case VxShaderCodeBuilder::CUBEMAP:
        return ShaderFragments::kSourceCubemap;
    case VxShaderCodeBuilder::FISHEYE_CIRCLE:
        return QByteArray(rotationSource == 2 ? ShaderFragments::kSourceFisheyeTurned : "")
            + ShaderFragments::kSourceFisheyeCircle;
    case VxShaderCodeBuilder::EQUIRECTANGULAR:
    case VxShaderCodeBuilder::AUTO:
    case VxShaderCodeBuilder::LAST_VALUE_INPUTPROJECTION:
        break;
    }
    return QByteArray(ShaderFragments::kSourceEquirectangular)
        + (useAngularLimits ? ShaderFragments::kAngularLimits : "");
}

const char *stereoSection(int stereoMode)
{
    switch (static_cast<VxShaderCodeBuilder::StereoMode>(stereoMode)) {
    case VxShaderCodeBuilder::STEREO_3D_OVERUNDER:
        return ShaderFragments::kStereoOverUnder;
    case VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE:
        return ShaderFragments::kStereoSideBySide;
    case VxShaderCodeBuilder::STEREO_3D_OVERUNDER_INVERTED:
        return ShaderFragments::kStereoOverUnderInverted;
    case VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE_INVERTED:
        return ShaderFragments::kStereoSideBySideInverted;
    case VxShaderCodeBuilder::STEREO_2D:
    case VxShaderCodeBuilder::STEREO_AUTO:
        break;
    }
    return "";
}

const char *effectSection(int effect)
{
    switch (static_cast<VxShaderCodeBuilder::ShaderEffect>(effect)) {
    case VxShaderCodeBuilder::SEPIA:
        return ShaderFragments::kSepia;
    case VxShaderCodeBuilder::BLACK_AND_WHITE:
        return ShaderFragments::kBlackAndWhite;
    case VxShaderCodeBuilder::TV:
        return ShaderFragments::kTv;
    case VxShaderCodeBuilder::INVERT:
        return ShaderFragments::kInvert;
    case VxShaderCodeBuilder::RED_ONLY:
        return ShaderFragments::kRedOnly;
    case VxShaderCodeBuilder::YELLOW_ONLY:
        return ShaderFragments::kYellowOnly;
    case VxShaderCodeBuilder::BLUE_ONLY:
        return ShaderFragments::kBlueOnly;
    case VxShaderCodeBuilder::NO_EFFECT:
    case VxShaderCodeBuilder::LAST_VALUE_EFFECT:
        break;
    }
    return "";
}

} // namespace

VxShaderCodeBuilder::VxShaderCodeBuilder(VxContext *context)
    : m_context(context)
    , m_projection(context->settings()->get(VxSettingsKeys::kOutputProjection.instance).toInt())
    , m_stereoMode(context->settings()->get(VxSettingsKeys::kInputStereoscopy.instance).toInt())
    , m_projectionSource(
          context->settings()->get(VxSettingsKeys::kInputProjection.instance).toInt())
{ }

void VxShaderCodeBuilder::setHmdMode(bool hmdMode)
{
    if (m_hmdMode == hmdMode)
        return;
    m_hmdMode = hmdMode;
    Q_EMIT hmdModeChanged();
}

void VxShaderCodeBuilder::setEffect(int effect)
{
    if (m_effect == effect)
        return;
    m_effect = effect;
    Q_EMIT effectChanged();
}

void VxShaderCodeBuilder::setProjection(int projection)
{
    if (m_projection == projection)
        return;
    m_projection = projection;
    Q_EMIT projectionChanged();
}

void VxShaderCodeBuilder::setStereoMode(int stereoMode)
{
    if (m_stereoMode == stereoMode)
        return;
    m_stereoMode = stereoMode;
    Q_EMIT stereoModeChanged();
}

void VxShaderCodeBuilder::setProjectionSource(int projectionSource)
{
    if (m_projectionSource == projectionSource)
        return;
    m_projectionSource = projectionSource;
    Q_EMIT projectionSourceChanged();
}

void VxShaderCodeBuilder::setRotationSource(int rotationSource)
{
    if (m_rotationSource == rotationSource)
        return;
    m_rotationSource = rotationSource;
    Q_EMIT rotationSourceChanged();
}

void VxShaderCodeBuilder::setInvertedColors(bool invertedColors)
{
    if (m_invertedColors == invertedColors)
        return;
    m_invertedColors = invertedColors;
    Q_EMIT invertedColorsChanged();
}

void VxShaderCodeBuilder::setTexturePixelFormat(const QString &texturePixelFormat)
{
    if (m_texturePixelFormat == texturePixelFormat)
        return;
    m_texturePixelFormat = texturePixelFormat;
    Q_EMIT texturePixelFormatChanged();
}

void VxShaderCodeBuilder::setNextEffect()
{
    const int next = m_effect + 1;
    setEffect(next >= LAST_VALUE_EFFECT ? NO_EFFECT : next);
}

void VxShaderCodeBuilder::setNextProjection()
{
    const int next = m_projection + 1;
    m_context->settings()->set(VxSettingsKeys::kOutputProjection.instance,
                               next >= LAST_VALUE_PROJECTION ? int(TAVRO) : next);
}

void VxShaderCodeBuilder::switchEyeStereoscopy()
{
    switch (static_cast<StereoMode>(m_stereoMode)) {
    case STEREO_3D_OVERUNDER:
        return setStereoMode(STEREO_3D_OVERUNDER_INVERTED);
    case STEREO_3D_SIDEBYSIDE:
        return setStereoMode(STEREO_3D_SIDEBYSIDE_INVERTED);
    case STEREO_3D_OVERUNDER_INVERTED:
        return setStereoMode(STEREO_3D_OVERUNDER);
    case STEREO_3D_SIDEBYSIDE_INVERTED:
        return setStereoMode(STEREO_3D_SIDEBYSIDE);
    case STEREO_2D:
    case STEREO_AUTO:
        break;
    }
}

QByteArray VxShaderCodeBuilder::vertexShaderSource()
{
    return ShaderFragments::kVertex;
}

QByteArray VxShaderCodeBuilder::fragmentShaderSource(bool hmd, bool overlay, bool flipY)
{
    // The host plug-in's pictures lie upside down with red and blue exchanged.
    if (m_context->commandLine().value(QStringLiteral("adobeplugin")).toBool()) {
        m_invertedColors = true;
        flipY = true;
    }

    QByteArray code;
    code += ShaderFragments::kPrecision;
    code += ShaderFragments::kConstants;
    code += ShaderFragments::kDeclarations;
    code += ShaderFragments::kFunctions;

    code += ShaderFragments::kMappingBegin;
    if (m_projectionSource != STANDARD)
        code += raySection(hmd ? int(RECTILINEAR) : m_projection, hmd);
    code += sourceSection(m_projectionSource, m_rotationSource, m_useAngularLimits);
    code += ShaderFragments::kMappingEnd;

    code += ShaderFragments::kMainBegin;
    if (flipY)
        code += ShaderFragments::kFlipY;
    if (overlay)
        code += ShaderFragments::kOverlayPlane;
    code += ShaderFragments::kReject;
    if (overlay) {
        code += ShaderFragments::kSampleOverlay;
    } else {
        code += stereoSection(m_stereoMode);
        code += ShaderFragments::kOpaque;
        code += m_invertedColors ? ShaderFragments::kSampleSwapped : ShaderFragments::kSample;
    }
    code += ShaderFragments::kBorderGuard;
    code += ShaderFragments::kColorMatrix;
    code += ShaderFragments::kVibrance;
    code += ShaderFragments::kHueSaturation;
    code += ShaderFragments::kBrightnessContrast;
    code += effectSection(m_effect);
    code += ShaderFragments::kVignette;
    code += ShaderFragments::kMainEnd;
    return code;
}

QByteArray VxShaderCodeBuilder::copyFragmentSource() const
{
    QByteArray code;
    code += ShaderFragments::kPrecision;
    code += ShaderFragments::kCopyBegin;
    code += m_invertedColors ? ShaderFragments::kCopySwapped : ShaderFragments::kCopy;
    code += ShaderFragments::kCopyEnd;
    return code;
}

ProjectionParameters VxShaderCodeBuilder::projectionParameters(float fov)
{
    // The eye point leaves the centre at 60 degrees and reaches the sphere at 180, along half a
    // sine wave, so that both ends are flat.
    double distance = 0.0;
    if (fov > 180.0F) {
        distance = 1.0;
    } else if (fov >= 60.0F) {
        const double t = (double(fov) - 60.0) / 120.0;
        distance = (1.0 + std::sin((2.0 * t - 1.0) * kPi / 2.0)) * 0.5;
    }
    const float half = float(double(fov) * kPi / 360.0);
    const double scale =
        (1.0 + distance) * std::sin(double(half)) / (distance + std::cos(double(half)));
    return {float(scale), float(distance)};
}
