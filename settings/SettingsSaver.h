// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Nothing that the user has set is to be lost when the program is killed, crashes, or ends by force
// because something hangs.

#include <QObject>
#include <QTimer>

class VxSettings;

/// Writes the settings a second after their last change, libvlc's included. Main thread only, which
/// never waits for the disk here: the settings may lie on a share that is gone, and a film that is
/// not there goes on.
class SettingsSaver : public QObject
{
    Q_OBJECT

public:
    /// \a settings are not owned and outlive this object.
    explicit SettingsSaver(VxSettings *settings, QObject *parent = nullptr);

    /// Writes at once, for the end of the program; for as long as the disk takes.
    void saveNow();

private:
    void saveLater();
    void handOverVlcOptions();

    VxSettings *m_settings;
    QTimer m_timer;
};
