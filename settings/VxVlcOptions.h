// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The process-wide record of libvlc settings. It lies beside the store because the controller and
// the video back end both need it and neither includes the other.

#include <QString>
#include <QStringList>

class VxSettingsManager;

/// What libvlc instances and media are made with. Main thread only.
struct VxVlcOptions
{
    bool hardwareDecoding = false;
    bool disableAudio = false;
    /// Comma-separated; used in place of the defaults when `custom` is set.
    QString customInstanceArguments;
    QString customMediaOptions;
    /// Chosen on the command line for this run, never stored.
    bool custom = false;
    /// True: planes are converted to RGB by the graphics card, not by libvlc.
    bool shaderColorConversion = false;
    /// Milliseconds.
    int audioDelay = 0;

    /// The record of the process; null before `main` has set it and after it has gone. Not owned.
    static VxVlcOptions *instance();
    static void setInstance(VxVlcOptions *options);

    /// Reads all fields but `custom`; a key that was never stored gives false, 0 or nothing.
    void load(VxSettingsManager *store);
    /// Gives the same fields to the store, to be written with its next write.
    void save(VxSettingsManager *store) const;

    /// Arguments for libvlc_new().
    QStringList instanceArguments() const;
    /// Options for each medium.
    QStringList mediaOptions() const;
};
