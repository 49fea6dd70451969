// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/VxSettings.h"

#include "settings/VxSettingsKeys.h"
#include "settings/VxSettingsManager.h"

#include <QUrl>

#include <cmath>
#include <limits>

namespace {

using namespace VxSettingsKeys;

enum class Takes {
    EffectAtOnce,
    EffectAfterRestart,
};

struct Row
{
    Setting setting;
    QVariant defaultValue;
    Takes takes = Takes::EffectAtOnce;
};

QVector<Row> table()
{
    const auto text = [](const char *value) { return QVariant(QString::fromLatin1(value)); };
    const Takes restart = Takes::EffectAfterRestart;
    return {
        {kHmdMode, false},
        {kVolume, 0.5},
        {kImageDisplayDuration, 30},
        {kImageDisplayDurationNone, false},
        {kOculusUseSDK, true},
        {kOculusDynamicPrediction, true},
        {kOculusUsePrediction, true},
        {kOculusVsync, true},
        {kOculusOverdrive, true},
        {kOculusFullscreen, true},
        {kHmdSdk, text("auto"), restart},
        {kHmdGazeUI, false, restart},
        {kRealSenseFeedbackScreen, true},
        {kLeapMotionGhostHands, true},
        {kCommunicationState, text("off"), restart},
        {kCommunicationPort, 7755, restart},
        {kCommunicationRate, 20, restart},
        {kCommunicationFormat, 0, restart},
        {kCommunicationIpMode, text("localhost"), restart},
        {kCommunicationIpCustom, text("192.168.1.1"), restart},
        {kCommunicationUrlMode, 0, restart},
        {kCommunicationOrientationMode, 0, restart},
        {kInputProjection, 0}, // equirectangular
        {kInputStereoscopy, 5}, // as the file says
        {kOutputProjection, 0}, // the adaptive one
        {kOutputDisplay, text("standard")},
        {kLoopMode, 1}, // the whole playlist
        {kTouchMode, true},
        {kEnableAnalytics, true, restart},
        {kYprRadUnit, false},
        {kCameraMoveSteps, 90.0},
        {kCameraInertia, 400},
        {kFileDialogLastFolder, QString(kUndefinedFolder)},
        {kPrintSavePath, QString(kUndefinedFolder)},
        {kForceOpenGL, false, restart},
        {kSharedMemory, false, restart},
        {kWindowWidth, 1000},
        {kWindowHeight, 600},
    };
}

bool isApplicationKey(const QString &key)
{
    return key.startsWith(QLatin1String("application"));
}

QString twinOf(QString key)
{
    return key.replace(QLatin1String("application"), QLatin1String("instance"));
}

/// A text as a whole number, also one that is written with a point; invalid for no number.
QVariant wholeNumber(const QString &text)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    constexpr double kMax = std::numeric_limits<int>::max();
    return ok && std::abs(number) < kMax ? QVariant(qRound(number)) : QVariant();
}

QVariant realNumber(const QString &text)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    return ok && std::isfinite(number) ? QVariant(number) : QVariant();
}

QVariant truth(const QString &text)
{
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
        return true;
    if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
        return false;
    const QVariant number = wholeNumber(text);
    return number.isValid() ? QVariant(number.toInt() != 0) : QVariant();
}

/// Gives a value that came back from the file as text its type again: without it a script that
/// adds to a number would append digits. What is no value of the type is as good as absent, and is
/// written as the default by the next save.
QVariant typed(const QVariant &value, const QVariant &defaultValue)
{
    const int type = defaultValue.userType();
    const QString text = value.toString();
    QVariant result;
    if (type == QMetaType::QString)
        result =
            text == QLatin1String("true") || text == QLatin1String("false") ? truth(text) : value;
    else if (value.userType() == type)
        result = value;
    else if (type == QMetaType::Bool)
        result = truth(text);
    else
        result = type == QMetaType::Int ? wholeNumber(text) : realNumber(text);
    return result.isValid() ? result : defaultValue;
}

} // namespace

VxSettings::VxSettings(const QString &applicationName, QObject *parent)
    : QObject(parent)
    , m_store(new VxSettingsManager(QSettings::UserScope, QStringLiteral("Tavro"), applicationName))
{
    const QVector<Row> rows = table();
    for (const Row &row : rows) {
        m_defaults.insert(row.setting.application, row.defaultValue);
        if (row.takes == Takes::EffectAfterRestart)
            m_needRestart.insert(row.setting.application, row.defaultValue);
    }
    m_store->setListener([this] { Q_EMIT unsaved(); });
}

VxSettings::~VxSettings() = default;

void VxSettings::load()
{
    for (auto it = m_defaults.cbegin(); it != m_defaults.cend(); ++it) {
        const QVariant value = typed(m_store->value(it.key(), it.value()), it.value());
        m_values.insert(it.key(), value);
        m_values.insert(twinOf(it.key()), value);
        if (m_needRestart.contains(it.key()))
            m_needRestart.insert(it.key(), value);
    }
}

void VxSettings::handOver()
{
    for (auto it = m_defaults.cbegin(); it != m_defaults.cend(); ++it)
        m_store->setValue(it.key(), m_values.value(it.key()));
}

void VxSettings::save()
{
    handOver();
    m_store->write();
}

bool VxSettings::saveInBackground()
{
    handOver();
    return m_store->writeInBackground();
}

void VxSettings::set(const QString &key, const QVariant &value)
{
    if (!m_values.contains(key))
        return;
    const QVariant kept = value.userType() == QMetaType::QUrl ? value.toUrl().toString() : value;
    m_values.insert(key, kept);
    Q_EMIT settingsChanged(key);
    if (isApplicationKey(key)) {
        const QString twin = twinOf(key);
        m_values.insert(twin, kept);
        Q_EMIT settingsChanged(twin);
        Q_EMIT unsaved();
    }
    const auto initial = m_needRestart.constFind(key);
    if (initial != m_needRestart.constEnd())
        Q_EMIT settingsNeedRestartChanged(key, kept, *initial);
}

void VxSettings::toggle(const QString &key)
{
    const QVariant value = get(key);
    if (value.userType() == QMetaType::Bool)
        set(key, !value.toBool());
}

QVariant VxSettings::get(const QString &key) const
{
    return m_values.value(key);
}

void VxSettings::resetDefaultValue(const QString &key)
{
    const auto it = m_defaults.constFind(key);
    if (it != m_defaults.constEnd())
        set(key, *it);
}
