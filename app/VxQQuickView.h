// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one window of the program, `vxView` of the interface.

#include <QQuickView>
#include <QSize>
#include <QTimer>

#include <atomic>

class VxContext;

/// Shows the scene, reports the GPU's facts and the frame rate, keeps the title, the full-screen
/// state and the window's size, and forwards mouse moves and native events to the interface.
class VxQQuickView : public QQuickView
{
    Q_OBJECT
    Q_PROPERTY(bool fullScreen READ isFullScreen NOTIFY fullScreenChanged)
    Q_PROPERTY(QSize maxTextureSize READ maxTextureSize NOTIFY maxTextureSizeChanged)
    Q_PROPERTY(int fps READ fps NOTIFY fpsChanged)
    Q_PROPERTY(QString gpuInfo READ gpuInfo NOTIFY gpuInfoChanged)

public:
    static constexpr QSize kMinimumSize{640, 460};

    explicit VxQQuickView(VxContext *context);
    ~VxQQuickView() override;

    bool isFullScreen() const { return m_fullScreen; }

    /// The largest texture that the GPU takes, in texels; invalid before the first frame.
    QSize maxTextureSize() const { return m_maxTextureSize; }

    /// Frames of the last whole second.
    int fps() const { return m_fps; }

    QString gpuInfo() const { return m_gpuInfo; }

    /// The size that the settings give the window, as far as there is room for it.
    Q_INVOKABLE QSize startSize() const;
    /// Gives the settings the size for the next start. It comes by itself when a new size has
    /// settled; for an end right after it.
    void keepSize();

    Q_INVOKABLE void fullScreenMode(bool enabled);
    Q_INVOKABLE QString colorTeam() const;
    Q_INVOKABLE QString copyright() const;
    Q_INVOKABLE QString copyrightDates() const;
    /// The version for people: its first three fields, and a suffix for a pre-release.
    Q_INVOKABLE QString version() const;
    Q_INVOKABLE QString title() const;
    /// Puts the source that is opened into the window's title.
    Q_INVOKABLE void updateTitle(const QString &newSource);

Q_SIGNALS:
    void signalNativeEvent(const QByteArray &eventType, void *message, long *result);
    void fullScreenChanged();
    void maxTextureSizeChanged();
    void displayPopup(const QString &qmlFile);
    void displayMessage(const QString &message);
    void mouseMoved(int x, int y);
    void fpsChanged();
    void gpuInfoChanged();

protected Q_SLOTS:
    void OnAlreadyLatestVersion();
    void OnNewVersionAvailable();
    void onWindowStateChanged(Qt::WindowState state);
    /// On the rendering thread, once, before the first frame.
    void computeGpuInfo();
    /// On the rendering thread, before every frame: gives the window its background.
    void clearWindow();
    /// On the rendering thread, after every frame.
    void computeFps();

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    bool nativeEvent(const QByteArray &eventType, void *message, long *result) override;

private:
    VxContext *m_context; // not owned
    bool m_fullScreen = false;
    QTimer m_sizeSettling;
    QSize m_newSize; // of an ordinary window, while it settles
    QSize m_maxTextureSize;
    QString m_gpuInfo;
    std::atomic_int m_fps{0};
    // Of the rendering thread alone:
    int m_frameCount = 0;
    qint64 m_lastSecond = 0;
};
