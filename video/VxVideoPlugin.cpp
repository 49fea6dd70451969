// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/VxVideoPlugin.h"

#include "settings/VxSettingsKeys.h"
#include "settings/VxSettingsManager.h"
#include "settings/VxVlcOptions.h"
#include "video/VlcInstance.h"
#include "video/VxVlcPlayerQml.h"

#include <QQmlEngine>

#include <vlc/vlc.h>

namespace {

const QString kVlc = QStringLiteral("vlc");
// As the plug-in calls itself in its description.
const QString kGStreamer = QStringLiteral("gstreamermediaplayer");

const char kPreferredPlugins[] = "QT_MULTIMEDIA_PREFERRED_PLUGINS";

VxVlcOptions &options()
{
    // Stands in where the process has made no record, as in tests.
    static VxVlcOptions none;
    VxVlcOptions *record = VxVlcOptions::instance();
    return record ? *record : none;
}

} // namespace

// The macro does not work inside a namespace.
static void initResources()
{
    Q_INIT_RESOURCE(VxVideo);
}

VxVideoPlugin::VxVideoPlugin(VxSettingsManager *store, const QString &plugin, QObject *parent)
    : QObject(parent)
    , m_currentPlugin(plugin)
    , m_store(store)
{
    qmlRegisterType<VxVlcPlayerQml>("VLCQt", 1, 0, "VlcVideoPlayer");
    m_plugins << QVariant(
        QVariantList{kVlc,
                     QStringLiteral("%1 '%2'").arg(QStringLiteral("VLC"),
                                                   tr("Should play any video, current version is ")
                                                       + QString::fromUtf8(libvlc_get_version()))});
    m_plugins << QVariant(QVariantList{
        kGStreamer,
        QStringLiteral("%1 '%2'").arg(QStringLiteral("GStreamer"),
                                      tr("Plays what the system's plug-ins can play"))});
    if (m_currentPlugin.isEmpty())
        m_currentPlugin = m_store->getString(VxSettingsKeys::kVideoPlugin, kVlc);
    // Qt reads it when it makes its first player. Who has set it knows better.
    if (m_currentPlugin != kVlc && !qEnvironmentVariableIsSet(kPreferredPlugins))
        qputenv(kPreferredPlugins, m_currentPlugin.toUtf8());
}

void VxVideoPlugin::registerQmlTypes()
{
    initResources();
    qmlRegisterType<VxVlcPlayerQml>("VxVideo", 1, 0, "VlcVideoPlayer");
    qmlRegisterType(QUrl(QStringLiteral("qrc:/VxVideo/Vx_MediaPlayer.qml")), "VxVideo", 1, 0,
                    "Vx_MediaPlayer");
}

void VxVideoPlugin::prepareVideo() const
{
    if (m_currentPlugin == kVlc)
        beginVlcInstance();
}

void VxVideoPlugin::setCurrentPlugin(const QString &currentPlugin)
{
    if (m_currentPlugin == currentPlugin)
        return;
    m_currentPlugin = currentPlugin;
    m_store->setValue(VxSettingsKeys::kVideoPlugin, currentPlugin);
    Q_EMIT currentPluginChanged();
    Q_EMIT displayMessage(tr("You must restart to apply modifications on video plugin."));
}

bool VxVideoPlugin::vlcHwDecoding() const
{
    return options().hardwareDecoding;
}

void VxVideoPlugin::setVlcHwDecoding(bool hwDecoding)
{
    if (vlcHwDecoding() == hwDecoding)
        return;
    m_store->setValue(VxSettingsKeys::kVlcHardwareDecoding, hwDecoding);
    options().hardwareDecoding = hwDecoding;
    Q_EMIT vlcHwDecodingChanged();
}

bool VxVideoPlugin::vlcShaderColorConversion() const
{
    return options().shaderColorConversion;
}

void VxVideoPlugin::setVlcShaderColorConversion(bool shaderColorConversion)
{
    if (vlcShaderColorConversion() == shaderColorConversion)
        return;
    m_store->setValue(VxSettingsKeys::kVlcShaderColorConversion, shaderColorConversion);
    options().shaderColorConversion = shaderColorConversion;
    Q_EMIT vlcShaderColorConversionChanged();
}

int VxVideoPlugin::vlcAudioDelay() const
{
    return options().audioDelay;
}

void VxVideoPlugin::setVlcAudioDelay(int audioDelay)
{
    if (vlcAudioDelay() == audioDelay)
        return;
    m_store->setValue(VxSettingsKeys::kVlcAudioDelay, audioDelay);
    options().audioDelay = audioDelay;
    Q_EMIT vlcAudioDelayChanged();
}

QVariantList VxVideoPlugin::pluginsList() const
{
    return m_plugins;
}

void VxVideoPlugin::resetDefaultValues(const QString &categoryId)
{
    if (categoryId == kVlc) {
        setVlcHwDecoding(false);
        setVlcShaderColorConversion(false);
        setVlcAudioDelay(0);
        options().disableAudio = false;
        options().customInstanceArguments.clear();
        options().customMediaOptions.clear();
        options().save(m_store);
    } else if (categoryId == QLatin1String("application")) {
        setCurrentPlugin(kVlc);
    }
}
