// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/VxSettingsManager.h"

namespace {

/// True when both would be the same line of the file, which holds numbers and bools as text.
bool sameWhenStored(const QVariant &a, const QVariant &b)
{
    return a.userType() == b.userType() ? a == b : a.toString() == b.toString();
}

} // namespace

VxSettingsManager::VxSettingsManager()
    : m_memoryOnly(true)
{ }

VxSettingsManager::VxSettingsManager(QSettings::Scope scope, const QString &organization,
                                     const QString &application)
    : m_settings(scope, organization, application)
    , m_memoryOnly(false)
{ }

void VxSettingsManager::setValue(const QString &key, const QVariant &value)
{
    if (m_memoryOnly) {
        m_cache.insert(key, value);
    } else {
        const auto before = m_given.constFind(key);
        if (before != m_given.constEnd() && sameWhenStored(*before, value)
            && m_settings.contains(key))
            return;
        m_given.insert(key, value);
    }
    m_settings.setValue(key, value);
}

/// The value behind the cached getters.
QVariant VxSettingsManager::cached(const QString &key)
{
    if (!m_memoryOnly && m_settings.contains(key))
        return m_settings.value(key);
    return m_cache[key];
}

/// The value behind the defaulted getters.
QVariant VxSettingsManager::stored(const QString &key, const QVariant &defaultValue) const
{
    if (!m_memoryOnly)
        return m_settings.value(key, defaultValue);
    const QVariant value = m_cache.value(key);
    return value.isValid() ? value : defaultValue;
}

/// Remembers what the caller was told, in the caller's type.
template <typename T> T VxSettingsManager::given(const QString &key, const T &value)
{
    m_given.insert(key, value);
    return value;
}

bool VxSettingsManager::getBool(const QString &key)
{
    return given(key, cached(key).toBool());
}

int VxSettingsManager::getInt(const QString &key)
{
    return given(key, cached(key).toInt());
}

double VxSettingsManager::getDouble(const QString &key)
{
    return given(key, cached(key).toDouble());
}

QString VxSettingsManager::getString(const QString &key)
{
    return given(key, cached(key).toString());
}

QStringList VxSettingsManager::getStringList(const QString &key)
{
    return given(key, cached(key).toStringList());
}

QColor VxSettingsManager::getColor(const QString &key)
{
    return given(key, cached(key).value<QColor>());
}

QVariant VxSettingsManager::getVariant(const QString &key)
{
    return given(key, cached(key));
}

bool VxSettingsManager::getBool(const QString &key, bool defaultValue)
{
    return given(key, stored(key, defaultValue).toBool());
}

int VxSettingsManager::getInt(const QString &key, int defaultValue)
{
    bool ok = false;
    const int value = stored(key, defaultValue).toInt(&ok);
    return given(key, ok ? value : defaultValue);
}

double VxSettingsManager::getDouble(const QString &key, double defaultValue)
{
    return given(key, stored(key, defaultValue).toDouble());
}

QString VxSettingsManager::getString(const QString &key, const QString &defaultValue)
{
    return given(key, stored(key, defaultValue).toString());
}

QStringList VxSettingsManager::getStringList(const QString &key, const QStringList &defaultValue)
{
    return given(key, stored(key, defaultValue).toStringList());
}

QColor VxSettingsManager::getColor(const QString &key, const QColor &defaultValue)
{
    const QVariant value = stored(key, defaultValue);
    return given(key, value.userType() == QMetaType::QColor ? value.value<QColor>() : QColor());
}

QVariant VxSettingsManager::getVariant(const QString &key, const QVariant &defaultValue)
{
    return given(key, stored(key, defaultValue));
}

QVariant VxSettingsManager::value(const QString &key, const QVariant &defaultValue)
{
    setDefault(key, defaultValue, false);
    return given(key, stored(key, defaultValue));
}

void VxSettingsManager::setDefault(const QString &key, const QVariant &defaultValue, bool replace)
{
    QVariant &entry = m_cache[key];
    if (replace || !entry.isValid())
        entry = defaultValue;
}
