// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program's spine: owns every subsystem object, makes them in a fixed order, shows them to the
// interface and deletes them in a fixed order.

#include "app/VxContext.h"

#include <QApplication>
#include <QVariantMap>

#include <memory>

class PicturePrefetch;
class SettingsSaver;
class VxQQuickView;
class VxVideoPlugin;

/// Made on the stack of `main`; init() before the event loop, teardown() after it. All on the main
/// thread, but for checkOpenGLVersion().
class Application : public QApplication, public VxContext
{
    Q_OBJECT
    Q_INTERFACES(VxContext)

public:
    Application(int &argc, char **argv);
    ~Application() override;

    /// Makes everything and shows the window. \a startDirectory is where relative paths of the
    /// command line count from; \a prefetch is the picture that is already decoded for them, or
    /// null.
    void init(const QString &startDirectory, std::unique_ptr<PicturePrefetch> prefetch);
    /// Writes what the user has set, before anything at the end that may hang.
    void saveSettings();
    /// Deletes everything and writes the settings.
    /// False when players that were left to themselves do not end: they use what is still there,
    /// and the process must end without destructors.
    bool teardown();

    VxSettings *settings() const override { return m_settings; }

    QQuickWindow *window() const override;

    VxGlobalObject *globalObject() const override { return m_globalObject; }

    VxShaderCodeBuilder *shaderBuilder() const override { return m_shaderBuilder; }

    VxTextureProvider *textureProvider() const override { return m_textureProvider; }

    VxHmd *hmd() const override { return nullptr; }

    VxHmdUIManager *hmdUIManager() const override { return nullptr; }

    QOpenGLContext *mainContext() const override { return m_mainContext; }

    QOpenGLContext *shareContext() const override { return m_shareContext; }

    QVariantMap commandLine() const override { return m_commandLine; }

    bool sharedMemory() const override { return m_sharedMemory; }

public Q_SLOTS:
    /// Tells the user that the graphics driver is too old, and quits.
    void displayOpenGLErrorMessage();
    /// On the rendering thread, with the scene graph's first context current.
    void checkOpenGLVersion();

    /// A hook for what has to stand before the window.
    void initRenderer() { }

Q_SIGNALS:
    /// The scene graph has its context, and that is good enough. From the rendering thread.
    void openGLReady();

protected:
    bool event(QEvent *event) override;

private Q_SLOTS:
    void playArgsMedia();

private:
    bool hasShaders() const;
    /// Named on the command line; empty if none is.
    QUrl firstMedium() const;
    void registerQmlTypes();
    void setContextProperties();
    void showView();

    VxSettings *m_settings = nullptr;
    SettingsSaver *m_saver = nullptr;
    VxQQuickView *m_view = nullptr;
    VxGlobalObject *m_globalObject = nullptr;
    VxShaderCodeBuilder *m_shaderBuilder = nullptr;
    VxVideoPlugin *m_videoPlugin = nullptr;
    VxTextureProvider *m_textureProvider = nullptr;
    QOpenGLContext *m_mainContext = nullptr; // the scene graph's
    QOpenGLContext *m_shareContext = nullptr;
    QVariantMap m_commandLine;
    bool m_sharedMemory = false;
};
