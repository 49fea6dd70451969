// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The persistent key-value store of the process: QSettings with typed getters, a memory for
// defaults, and a rule that keeps programs that run side by side from undoing each other's
// changes.

#include "settings/KernelSettingsWriter.h"

#include <QColor>
#include <QHash>
#include <QSettings>
#include <QStringList>

#include <functional>
#include <future>

/// Typed access to the settings file. Main thread only. Nothing is reported: a file that cannot
/// be read is an empty one, and a write that fails is tried again with the next one.
class VxSettingsManager : public KernelSettingsWriter
{
public:
    /// A memory-only store: reads never touch the file, also when the key is there.
    VxSettingsManager();
    VxSettingsManager(QSettings::Scope scope, const QString &organization,
                      const QString &application);
    /// Writes what is left to write.
    ~VxSettingsManager() override;

    /// What readers of this store are given from now on; the file gets it with the next write. A
    /// value that is what this store last gave out or wrote is no change: the file then keeps what
    /// it has, which may be newer and another instance's.
    void setValue(const QString &key, const QVariant &value) override;

    /// Has \a listener called with each change that waits to be written.
    void setListener(std::function<void()> listener) { m_listener = std::move(listener); }

    /// When it returns, what was set is in the file. For as long as the disk takes.
    void write();
    /// Begins the same on a thread of its own, because a disk may never answer. False while the one
    /// before is still at it: what was set then goes on waiting. Readers wait for it.
    bool writeInBackground();

    // Cached getters: the stored value, else the default that setDefault() remembered, else
    // false, 0, 0.0, empty or invalid.
    bool getBool(const QString &key);
    int getInt(const QString &key);
    double getDouble(const QString &key);
    QString getString(const QString &key);
    QStringList getStringList(const QString &key);
    QColor getColor(const QString &key);
    QVariant getVariant(const QString &key);

    // Defaulted getters: the stored value, else the given default, which is not remembered.
    // Text that is no number gives the default from getInt() but 0.0 from getDouble().
    bool getBool(const QString &key, bool defaultValue);
    int getInt(const QString &key, int defaultValue);
    double getDouble(const QString &key, double defaultValue);
    QString getString(const QString &key, const QString &defaultValue);
    QStringList getStringList(const QString &key, const QStringList &defaultValue);
    /// Invalid when something other than a colour is stored, also a colour's name.
    QColor getColor(const QString &key, const QColor &defaultValue);
    QVariant getVariant(const QString &key, const QVariant &defaultValue);

    /// The stored value, else the default, which from now on the cached getters give too. What
    /// comes from the file is text.
    QVariant value(const QString &key, const QVariant &defaultValue);

    /// What the cached getters give for a key that is not stored. Without `replace` a valid
    /// default that is there already stays.
    void setDefault(const QString &key, const QVariant &defaultValue, bool replace);

    /// Writes what is pending and takes up what other instances have written meanwhile.
    void sync();

    /// The file behind the store.
    QString fileName() const { return m_settings.fileName(); }

private:
    struct Pending
    {
        QVariant value;
        bool isChange; // otherwise only for a file that lacks the key
    };

    using PendingValues = QHash<QString, Pending>;
    class FileWriter;

    PendingValues takePending();
    QVariant cached(const QString &key);
    QVariant stored(const QString &key, const QVariant &defaultValue);
    template <typename T> T given(const QString &key, const T &value);

    QSettings m_settings;
    bool m_memoryOnly;
    /// Defaults by key; in a memory-only store also the values.
    QHash<QString, QVariant> m_cache;
    /// What was last given out or handed over to be written, by key.
    QHash<QString, QVariant> m_given;
    PendingValues m_pending;
    std::future<void> m_writer;
    std::function<void()> m_listener;
};
