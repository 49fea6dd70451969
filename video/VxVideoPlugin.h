// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Says which back end plays videos, and holds what the user has set for libvlc.

#include <QObject>
#include <QVariantList>

class VxSettingsManager;

/// `vxVideoPlugin` in QML. Main thread only.
class VxVideoPlugin : public QObject
{
    Q_OBJECT
    /// "vlc", or the name by which Qt's multimedia knows the plug-in to prefer. A new value is for
    /// the next start.
    Q_PROPERTY(
        QString currentPlugin READ currentPlugin WRITE setCurrentPlugin NOTIFY currentPluginChanged)
    Q_PROPERTY(
        bool vlcHwDecoding READ vlcHwDecoding WRITE setVlcHwDecoding NOTIFY vlcHwDecodingChanged)
    Q_PROPERTY(bool vlcShaderColorConversion READ vlcShaderColorConversion WRITE
                   setVlcShaderColorConversion NOTIFY vlcShaderColorConversionChanged)
    /// Milliseconds by which sound comes after the picture; may be negative.
    Q_PROPERTY(
        int vlcAudioDelay READ vlcAudioDelay WRITE setVlcAudioDelay NOTIFY vlcAudioDelayChanged)

public:
    /// `plugin` is the back end for this run; empty: the stored one. `store` is not owned.
    explicit VxVideoPlugin(VxSettingsManager *store, const QString &plugin = QString(),
                           QObject *parent = nullptr);

    /// Makes the module "VxVideo" 1.0 known to QML; before the first import.
    static void registerQmlTypes();

    /// Begins what the first video will wait for; for a start with one, before anything is opened.
    void prepareVideo() const;

    QString currentPlugin() const { return m_currentPlugin; }

    void setCurrentPlugin(const QString &currentPlugin);
    bool vlcHwDecoding() const;
    void setVlcHwDecoding(bool hwDecoding);
    bool vlcShaderColorConversion() const;
    void setVlcShaderColorConversion(bool shaderColorConversion);
    int vlcAudioDelay() const;
    void setVlcAudioDelay(int audioDelay);

    /// One list for each back end: its name and its label.
    Q_INVOKABLE QVariantList pluginsList() const;
    /// Resets the settings whose keys begin with the category: "vlc" or "application".
    Q_INVOKABLE void resetDefaultValues(const QString &categoryId);

Q_SIGNALS:
    void currentPluginChanged();
    void vlcHwDecodingChanged();
    void vlcShaderColorConversionChanged();
    void vlcAudioDelayChanged();
    void displayMessage(const QString &message);

private:
    QVariantList m_plugins;
    QString m_currentPlugin;
    VxSettingsManager *m_store;
};
