// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The settings as QML and the program's objects see them: all values in memory, a signal for each
// change, and two scopes. A key that begins with "application" is the user's lasting preference;
// its twin, which begins with "instance", is what running code reads and is forgotten at exit.

#include <QObject>
#include <QScopedPointer>
#include <QVariantMap>

class VxSettingsManager;

/// Every setting by key. The keys are fixed (VxSettingsKeys.h names them): others are ignored by
/// set() and toggle() and read as invalid. Main thread only.
class VxSettings : public QObject
{
    Q_OBJECT

public:
    /// The file belongs to the user and is named by `applicationName`, which carries the version:
    /// each version starts from fresh settings. Nothing is read before load().
    explicit VxSettings(const QString &applicationName, QObject *parent = nullptr);
    ~VxSettings() override;

    /// Reads each preference, or its default, into the preference and its twin.
    void load();
    /// Writes the preferences, and what else was given to the store; when it returns, they are in
    /// the file. Those that did not change in this run are left as they are in the file, where
    /// another instance may have changed them meanwhile.
    void save();
    /// Begins the same without waiting for the disk. False while the disk still has the one before
    /// to answer.
    bool saveInBackground();

    /// The store behind, for keys that have neither a default nor a twin.
    VxSettingsManager *store() const { return m_store.data(); }

    /// Changes a value and signals, also when the value is the same as before. A preference takes
    /// its twin along. An URL is kept as text.
    Q_INVOKABLE void set(const QString &key, const QVariant &value);
    /// Inverts a bool; other values stay.
    Q_INVOKABLE void toggle(const QString &key);
    Q_INVOKABLE QVariant get(const QString &key) const;
    /// Sets a preference to what it is on a fresh machine; does nothing for a twin.
    Q_INVOKABLE void resetDefaultValue(const QString &key);

Q_SIGNALS:
    /// Something was set that the file does not have yet, a preference or a key of the store.
    void unsaved();
    /// The preference is told first, then its twin.
    void settingsChanged(const QString &key);
    /// A preference that is only read at start was set; with `value` equal to `initialValue` the
    /// running program and the preference agree again.
    void settingsNeedRestartChanged(const QString &key, const QVariant &value,
                                    const QVariant &initialValue);

private:
    void handOver();

    QScopedPointer<VxSettingsManager> m_store;
    QVariantMap m_values;
    QVariantMap m_defaults;
    /// The preferences that are only read at start, with their values at load().
    QVariantMap m_needRestart;
};
