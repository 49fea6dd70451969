// SPDX-License-Identifier: GPL-3.0-or-later
// The camera half of the controller; the media road and the metadata have files of their own.
#include "app/VxGlobalObject.h"

#include "app/VxContext.h"
#include "render/VxShaderCodeBuilder.h"
#include "render/VxTextureProvider.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPropertyAnimation>
#include <QQmlEngine>
#include <QQuickView>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr float kPi = 3.14159265F;
constexpr float kFlatFov = 180;
constexpr int kInteractionGuardMs = 5000;
constexpr int kLoopModeCount = 3;

int displayTimeMs(const QVariant &seconds)
{
    constexpr int kMaxSeconds = std::numeric_limits<int>::max() / 1000;
    // No picture is seen for less than a second, and a timer of 0 would fire in every turn.
    return std::clamp(seconds.toInt(), 1, kMaxSeconds) * 1000;
}

} // namespace

VxGlobalObject::VxGlobalObject(VxContext *context)
    : m_context(context)
    , m_yawMin(-kPi)
    , m_yawMax(kPi)
    , m_pitchMin(-kPi / 2)
    , m_pitchMax(kPi / 2)
    , m_touchMode(setting(VxSettingsKeys::kTouchMode.instance).toBool())
    , m_imageDisplayTime(displayTimeMs(setting(VxSettingsKeys::kImageDisplayDuration.application)))
    , m_noTimeout(setting(VxSettingsKeys::kImageDisplayDurationNone.application).toBool())
{
    setLoopMode(setting(VxSettingsKeys::kLoopMode.instance).toInt());

    m_interactionTimer.setInterval(kInteractionGuardMs);
    m_interactionTimer.setSingleShot(true);
    connect(&m_nextImageTimer, &QTimer::timeout, this, &VxGlobalObject::imageTimeoutSetNext);

    if (auto *view = qobject_cast<QQuickView *>(m_context->window()))
        connect(view->engine(), &QQmlEngine::quit, this, &VxGlobalObject::quit);
    connect(m_context->settings(), &VxSettings::settingsChanged, this,
            &VxGlobalObject::onSettingsChanged);
    connect(m_context->textureProvider(), &VxTextureProvider::textureSizeChanged, this,
            &VxGlobalObject::onTextureSizeChanged);
    connect(this, &VxGlobalObject::yawChanged, this, &VxGlobalObject::resetYawInterpolate);
    connect(this, &VxGlobalObject::pitchChanged, this, &VxGlobalObject::resetPitchInterpolate);
    connect(m_context->textureProvider(), &VxTextureProvider::textureIdChanged, this, [this] {
        // Some players have a texture before they have a picture.
        constexpr int kBuffered = 6;
        const QObject *player = currentPlayer();
        if (m_context->textureProvider()->textureId() > 0 && player
            && player->property("playerStatus").toInt() == kBuffered)
            noteShown();
    });
    connect(&m_mediumInquiry, &FileInquiry::askingChanged, this, &VxGlobalObject::openingChanged);
    connect(&m_advisor, &MediumAdvisor::explained, this, &VxGlobalObject::failureExplained);

    onSettingsChanged(VxSettingsKeys::kOutputDisplay.instance);
}

QVariant VxGlobalObject::setting(const QString &key) const
{
    return m_context->settings()->get(key);
}

void VxGlobalObject::setVideoLogMessage(const QString &message)
{
    if (message == m_videoLogMessage)
        return;
    m_videoLogMessage = message;
    Q_EMIT videoLogMessageChanged();
}

void VxGlobalObject::setYaw(float radians, bool updateMatrix)
{
    const float wrapped = CameraMath::wrapAngle(radians);
    if (wrapped == m_angles.yaw)
        return;
    m_angles.yaw = wrapped;
    Q_EMIT yawChanged();
    if (updateMatrix)
        rebuildMatrix();
}

void VxGlobalObject::setPitch(float radians, bool updateMatrix)
{
    const float wrapped = CameraMath::wrapAngle(radians);
    if (wrapped == m_angles.pitch)
        return;
    m_angles.pitch = wrapped;
    Q_EMIT pitchChanged();
    if (updateMatrix)
        rebuildMatrix();
}

void VxGlobalObject::setRoll(float radians, bool updateMatrix)
{
    const float wrapped = CameraMath::wrapAngle(radians);
    if (wrapped == m_angles.roll)
        return;
    m_angles.roll = wrapped;
    Q_EMIT rollChanged();
    if (updateMatrix)
        rebuildMatrix();
}

void VxGlobalObject::setYawMin(float radians)
{
    if (radians == m_yawMin)
        return;
    m_yawMin = radians;
    Q_EMIT yawMinChanged();
}

void VxGlobalObject::setYawMax(float radians)
{
    if (radians == m_yawMax)
        return;
    m_yawMax = radians;
    Q_EMIT yawMaxChanged();
}

void VxGlobalObject::setPitchMin(float radians)
{
    if (radians == m_pitchMin)
        return;
    m_pitchMin = radians;
    Q_EMIT pitchMinChanged();
}

void VxGlobalObject::setPitchMax(float radians)
{
    if (radians == m_pitchMax)
        return;
    m_pitchMax = radians;
    Q_EMIT pitchMaxChanged();
}

void VxGlobalObject::rebuildMatrix()
{
    setRotationMatrix(CameraMath::matrixFromEuler({m_angles.yaw + m_offsetAngles.yaw,
                                                   m_angles.pitch + m_offsetAngles.pitch,
                                                   m_angles.roll + m_offsetAngles.roll}),
                      false, true);
}

void VxGlobalObject::setRotationMatrix(const QMatrix4x4 &matrix, bool updateEuler,
                                       bool restartTimer)
{
    if (matrix == m_cameraMatrix)
        return;
    if (restartTimer)
        m_interactionTimer.start();
    m_cameraMatrix = matrix;
    Q_EMIT rotationMatrixChanged();
    if (!updateEuler)
        return;
    const CameraMath::EulerAngles angles = CameraMath::eulerFromMatrix(matrix);
    setYaw(angles.yaw, false);
    setPitch(angles.pitch, false);
    setRoll(angles.roll, false);
}

void VxGlobalObject::setInitialOrientation(float yaw, float pitch, float roll)
{
    m_initialAngles = {yaw, pitch, roll};
    m_correction =
        CameraMath::matrixFromEuler({0, 0, roll}) * CameraMath::matrixFromEuler({0, pitch, 0});
    Q_EMIT rotationMatrixChanged();
}

void VxGlobalObject::setOffsetOrientation(const CameraMath::EulerAngles &offset)
{
    m_offsetAngles = offset;
    rebuildMatrix();
}

float VxGlobalObject::adjustedPitch() const
{
    if (m_context->shaderBuilder()->projectionSource() != VxShaderCodeBuilder::STANDARD)
        return CameraMath::wrapAngle(m_angles.pitch);
    const float half = m_fov * 0.0174532925F * 0.5F;
    const float upper = -m_pitchMin - half;
    const float lower = -m_pitchMax + half;
    return m_angles.pitch > upper ? upper : std::max(lower, m_angles.pitch);
}

void VxGlobalObject::setFov(float degrees, bool reset)
{
    if (std::isnan(degrees))
        return;
    float limited = degrees;
    if (degrees < m_fovLimitMin || degrees > m_fovLimitMax)
        limited = reset ? 90 : std::clamp(degrees, m_fovLimitMin, m_fovLimitMax);
    if (limited == m_fov)
        return;
    m_fov = limited;
    Q_EMIT fovChanged();
    setPitch(m_angles.pitch, true);
}

void VxGlobalObject::setFovLimitMin(float degrees)
{
    if (degrees == m_fovLimitMin)
        return;
    m_fovLimitMin = degrees;
    Q_EMIT fovLimitMinChanged();
}

void VxGlobalObject::setFovLimitMax(float degrees)
{
    if (degrees == m_fovLimitMax)
        return;
    m_fovLimitMax = degrees;
    Q_EMIT fovLimitMaxChanged();
}

void VxGlobalObject::setFovLimits()
{
    float min = 20;
    float max = 300;
    const VxShaderCodeBuilder *builder = m_context->shaderBuilder();
    if (builder->projectionSource() == VxShaderCodeBuilder::STANDARD) {
        max = 180;
    } else {
        switch (builder->projection()) {
        case VxShaderCodeBuilder::TAVRO:
            min = 80;
            break;
        case VxShaderCodeBuilder::FISHEYE:
        case VxShaderCodeBuilder::LITTLE_PLANET:
            max = 360;
            break;
        case VxShaderCodeBuilder::RECTILINEAR:
            max = 130;
            break;
        default: // a number from a settings file
            break;
        }
    }
    setFovLimitMax(max);
    setFovLimitMin(min);
}

void VxGlobalObject::onProjectionChanged()
{
    setFovLimits();
    const bool flat =
        m_context->shaderBuilder()->projectionSource() == VxShaderCodeBuilder::STANDARD;
    setFov(flat ? kFlatFov : m_fov, false);
}

void VxGlobalObject::setTouchMode(bool inverted)
{
    if (inverted == m_touchMode)
        return;
    m_touchMode = inverted;
    Q_EMIT touchModeChanged();
}

void VxGlobalObject::setSplitView(bool split)
{
    if (split == m_splitView)
        return;
    m_splitView = split;
    Q_EMIT splitViewChanged();
}

void VxGlobalObject::setTv3dView(bool tv3d)
{
    if (tv3d == m_tv3dView)
        return;
    m_tv3dView = tv3d;
    Q_EMIT tv3dViewChanged();
}

int VxGlobalObject::outputDisplay() const
{
    if (!m_splitView)
        return 0;
    return m_tv3dView ? 1 : 2;
}

bool VxGlobalObject::adobePlugin() const
{
    return m_context->commandLine().value(QStringLiteral("adobeplugin")).toBool();
}

bool VxGlobalObject::touchTable() const
{
    return m_context->commandLine().value(QStringLiteral("touchtable")).toBool();
}

void VxGlobalObject::setYawInterpolate(float radians)
{
    if (radians != m_yawInterpolate) {
        m_yawInterpolate = radians;
        Q_EMIT yawInterpolateChanged();
    }
    // The camera may have been turned beside a running move: the twin then already has the value.
    setYaw(radians, true);
}

void VxGlobalObject::setPitchInterpolate(float radians)
{
    if (radians != m_pitchInterpolate) {
        m_pitchInterpolate = radians;
        Q_EMIT pitchInterpolateChanged();
    }
    setPitch(radians, true);
}

void VxGlobalObject::setLoopMode(int mode)
{
    const int wrapped = ((mode % kLoopModeCount) + kLoopModeCount) % kLoopModeCount;
    if (wrapped == m_loopMode)
        return;
    m_loopMode = wrapped;
    Q_EMIT loopModeChanged();
}

int VxGlobalObject::projectionSourceSetting() const
{
    return setting(VxSettingsKeys::kInputProjection.instance).toInt();
}

void VxGlobalObject::interpolateValue(const QByteArray &property, float newValue, int duration,
                                      bool cumul)
{
    const float present = this->property(property.constData()).toFloat();
    float start = present;
    float previousEnd = present;
    QPropertyAnimation *&animation = m_animations[property];
    if (!animation) {
        animation = new QPropertyAnimation(this, property, this);
        animation->setEasingCurve(QEasingCurve::OutQuad);
    } else if (animation->state() == QAbstractAnimation::Running) {
        start = animation->currentValue().toFloat();
        previousEnd = animation->endValue().toFloat();
    }
    animation->stop();
    animation->setDuration(duration);
    animation->setStartValue(start);
    animation->setEndValue(cumul ? previousEnd + newValue : newValue);
    animation->start();
}

bool VxGlobalObject::isAnimationRunning(const QByteArray &property) const
{
    const QPropertyAnimation *animation = m_animations.value(property);
    return animation && animation->state() == QAbstractAnimation::Running;
}

void VxGlobalObject::resetYawInterpolate()
{
    // The twin follows silently, so that the next inertia starts where the camera really is.
    if (!isAnimationRunning("yawInterpolate"))
        m_yawInterpolate = m_angles.yaw;
}

void VxGlobalObject::resetPitchInterpolate()
{
    if (!isAnimationRunning("pitchInterpolate"))
        m_pitchInterpolate = m_angles.pitch;
}

void VxGlobalObject::stopCameraAnimation()
{
    // A zoom in progress may end on its own.
    for (const char *property : {"yaw", "pitch", "yawInterpolate", "pitchInterpolate"}) {
        if (QPropertyAnimation *animation = m_animations.value(property))
            animation->stop();
    }
}

void VxGlobalObject::onSettingsChanged(const QString &key)
{
    if (key == VxSettingsKeys::kOutputDisplay.instance) {
        const QString display = setting(key).toString();
        if (display == QLatin1String("3d")) {
            setSplitView(true);
            setTv3dView(true);
        } else if (display == QLatin1String("split")) {
            // From "3d" straight to "split" the anamorphic picture stays: users of televisions
            // that know only the split signal set both in turn.
            setSplitView(true);
        } else {
            setSplitView(false);
            setTv3dView(false);
        }
        Q_EMIT outputDisplayChanged();
    } else if (key == VxSettingsKeys::kTouchMode.instance) {
        setTouchMode(setting(key).toBool());
    } else if (key == VxSettingsKeys::kImageDisplayDuration.application) {
        m_imageDisplayTime = displayTimeMs(setting(key));
    } else if (key == VxSettingsKeys::kImageDisplayDurationNone.application) {
        m_noTimeout = setting(key).toBool();
    } else if (key == VxSettingsKeys::kInputProjection.instance) {
        applyProjection(currentMetadata());
        Q_EMIT projectionSourceSettingChanged();
    } else if (key == VxSettingsKeys::kInputStereoscopy.instance) {
        applyStereoMode(currentMetadata());
    } else if (key == VxSettingsKeys::kOutputProjection.instance) {
        m_context->shaderBuilder()->setProjection(setting(key).toInt());
    } else if (key == VxSettingsKeys::kLoopMode.instance) {
        setLoopMode(setting(key).toInt());
    }
}

QString VxGlobalObject::getApplicationDirPath() const
{
    return QCoreApplication::applicationDirPath();
}

QString VxGlobalObject::aboutThirdParty() const
{
    return QStringLiteral(
        "***********\n* LibVLC  *\n***********\n"
        "This program decodes videos with libVLC, under the GNU Lesser General Public License, "
        "version 2.1 or later.\n\n"
        "Qt 5, under the GNU Lesser General Public License, version 3.\n"
        "libgomp, under the GNU General Public License, version 3, with the GCC Runtime Library "
        "Exception.\n"
        "libjpeg-turbo, under the IJG License and 3-clause BSD licences.\n");
}

void VxGlobalObject::hideCursor()
{
    QGuiApplication::setOverrideCursor(Qt::BlankCursor);
}

void VxGlobalObject::restoreCursor()
{
    QGuiApplication::restoreOverrideCursor();
}

void VxGlobalObject::restart()
{
    end(kRestartExitCode);
}

QString VxGlobalObject::getEnterpriseWebLink() const
{
    return QStringLiteral("https://www.tavro.example/enterprise");
}

QString VxGlobalObject::getSoftwareName() const
{
    return QStringLiteral("Tavro VR Player");
}

void VxGlobalObject::quit()
{
    end(0);
}

void VxGlobalObject::end(int exitCode)
{
    Q_EMIT ending(exitCode);
    m_mediumInquiry.forget();
    // Playback must have stopped before the event loop does: its threads call back into items that
    // teardown deletes.
    if (m_mediaLoader)
        QMetaObject::invokeMethod(m_mediaLoader, "destroyVideoPlayer", Qt::DirectConnection);
    QCoreApplication::exit(exitCode);
}
