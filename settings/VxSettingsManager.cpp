// SPDX-License-Identifier: GPL-3.0-or-later
#include "settings/VxSettingsManager.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace {

/// True when both would be the same line of the file, which holds numbers and bools as text.
bool sameWhenStored(const QVariant &a, const QVariant &b)
{
    return a.userType() == b.userType() ? a == b : a.toString() == b.toString();
}

} // namespace

/// Writes with a QSettings of its own, which is for one thread, to the file of another one.
class VxSettingsManager::FileWriter
{
public:
    FileWriter(const QSettings &settings, PendingValues values)
        : m_scope(settings.scope())
        , m_organization(settings.organizationName())
        , m_application(settings.applicationName())
        , m_values(std::move(values))
    { }

    // On any thread.
    void operator()() const
    {
        QSettings file(m_scope, m_organization, m_application);
        // Keys that another instance has added meanwhile must not look as if they were missing.
        file.sync();
        for (auto it = m_values.cbegin(); it != m_values.cend(); ++it) {
            if (it->isChange || !file.contains(it.key()))
                file.setValue(it.key(), it->value);
        }
        file.sync();
    }

private:
    QSettings::Scope m_scope;
    QString m_organization;
    QString m_application;
    PendingValues m_values;
};

VxSettingsManager::VxSettingsManager()
    : m_memoryOnly(true)
{ }

VxSettingsManager::VxSettingsManager(QSettings::Scope scope, const QString &organization,
                                     const QString &application)
    : m_settings(scope, organization, application)
    , m_memoryOnly(false)
{ }

VxSettingsManager::~VxSettingsManager()
{
    write();
}

void VxSettingsManager::setValue(const QString &key, const QVariant &value)
{
    if (m_memoryOnly) {
        m_cache.insert(key, value);
        m_settings.setValue(key, value);
        return;
    }
    const auto before = m_given.constFind(key);
    const bool isChange = before == m_given.constEnd() || !sameWhenStored(*before, value);
    m_pending.insert(key, {value, isChange});
    if (isChange && m_listener)
        m_listener();
}

/// Hands over what waits: from here on it counts as written.
VxSettingsManager::PendingValues VxSettingsManager::takePending()
{
    for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it) {
        if (it->isChange)
            m_given.insert(it.key(), it->value);
    }
    return std::exchange(m_pending, {});
}

void VxSettingsManager::write()
{
    if (m_writer.valid())
        m_writer.get();
    if (!m_pending.isEmpty())
        FileWriter(m_settings, takePending())();
}

bool VxSettingsManager::writeInBackground()
{
    if (m_writer.valid() && m_writer.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return false;
    if (m_pending.isEmpty())
        return true;
    const FileWriter writer(m_settings, takePending());
    try {
        m_writer = std::async(std::launch::async, writer);
    } catch (const std::system_error &) {
        writer(); // there is no thread to be had
    }
    return true;
}

void VxSettingsManager::sync()
{
    write();
    m_settings.sync();
}

/// The value behind the cached getters.
QVariant VxSettingsManager::cached(const QString &key)
{
    write();
    if (!m_memoryOnly && m_settings.contains(key))
        return m_settings.value(key);
    return m_cache[key];
}

/// The value behind the defaulted getters.
QVariant VxSettingsManager::stored(const QString &key, const QVariant &defaultValue)
{
    write();
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
