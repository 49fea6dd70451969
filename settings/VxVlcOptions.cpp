// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/VxVlcOptions.h"

#include "settings/VxSettingsKeys.h"
#include "settings/VxSettingsManager.h"

namespace {

VxVlcOptions *s_instance = nullptr;

// Without dashes, so that libvlc does not take it for an option of its own and refuse to start.
const QString kNoPluginsCache = QStringLiteral("no-plugins-cache");

} // namespace

VxVlcOptions *VxVlcOptions::instance()
{
    return s_instance;
}

void VxVlcOptions::setInstance(VxVlcOptions *options)
{
    s_instance = options;
}

void VxVlcOptions::load(VxSettingsManager *store)
{
    using namespace VxSettingsKeys;
    hardwareDecoding = store->getBool(kVlcHardwareDecoding);
    disableAudio = store->getBool(kVlcDisableAudio);
    customInstanceArguments = store->getString(kVlcCustomInstanceArguments);
    customMediaOptions = store->getString(kVlcCustomMediaOptions);
    shaderColorConversion = store->getBool(kVlcShaderColorConversion);
    audioDelay = store->getInt(kVlcAudioDelay);
}

void VxVlcOptions::save(VxSettingsManager *store) const
{
    using namespace VxSettingsKeys;
    store->setValue(kVlcHardwareDecoding, hardwareDecoding);
    store->setValue(kVlcDisableAudio, disableAudio);
    store->setValue(kVlcCustomInstanceArguments, customInstanceArguments);
    store->setValue(kVlcCustomMediaOptions, customMediaOptions);
    store->setValue(kVlcShaderColorConversion, shaderColorConversion);
    store->setValue(kVlcAudioDelay, audioDelay);
}

QStringList VxVlcOptions::instanceArguments() const
{
    if (custom)
        return customInstanceArguments.split(QLatin1Char(','), Qt::SkipEmptyParts);
    QStringList arguments{QStringLiteral("--verbose=0"), QStringLiteral("--quiet"),
                          QStringLiteral("--intf=dummy"), QStringLiteral("--ignore-config"),
                          kNoPluginsCache};
    if (disableAudio)
        arguments << QStringLiteral("--noaudio");
    return arguments;
}

QStringList VxVlcOptions::mediaOptions() const
{
    if (custom)
        return customMediaOptions.split(QLatin1Char(','), Qt::SkipEmptyParts);
    QStringList options{QStringLiteral(":velaform-output-formats=YUYV"),
                        QStringLiteral(":velaform-skip-frames=true"), kNoPluginsCache};
    if (hardwareDecoding)
        options << QStringLiteral(":avcodec-hw=any");
    // Where the processors do not suffice, libvlc's decoder skips pictures for its own lateness, in
    // the end all until the next key frame: seconds without a picture. Left to the output, which
    // drops what is late, the loss is even.
    options << QStringLiteral(":no-avcodec-hurry-up");
    return options;
}
