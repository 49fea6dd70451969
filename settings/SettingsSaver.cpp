// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/SettingsSaver.h"

#include "settings/VxSettings.h"
#include "settings/VxVlcOptions.h"

namespace {

// Volume keys and a window's edge change a setting many times in a row.
constexpr int kDelayMs = 1000;

} // namespace

SettingsSaver::SettingsSaver(VxSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(kDelayMs);
    connect(&m_timer, &QTimer::timeout, this, &SettingsSaver::saveLater);
    connect(settings, &VxSettings::unsaved, &m_timer, qOverload<>(&QTimer::start));
}

void SettingsSaver::saveNow()
{
    handOverVlcOptions();
    m_settings->save();
    m_timer.stop();
}

void SettingsSaver::saveLater()
{
    handOverVlcOptions();
    if (m_settings->saveInBackground())
        m_timer.stop();
    else
        m_timer.start(); // the disk has not answered yet
}

void SettingsSaver::handOverVlcOptions()
{
    if (const VxVlcOptions *options = VxVlcOptions::instance())
        options->save(m_settings->store());
}
