// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How the objects of the program reach each other without knowing the application: a pure
// interface whose getters return pointers to types that are only declared here. `Application`
// implements it; tests implement it with just the objects that they need.

#include <QObject>
#include <QVariantMap>

class QOpenGLContext;
class QQuickWindow;
class VxGlobalObject;
class VxHmd;
class VxHmdUIManager;
class VxSettings;
class VxShaderCodeBuilder;
class VxTextureProvider;

/// Access to the objects that the application owns. Any getter may return null: before the
/// object is made, after teardown, and for devices that are absent.
class VxContext
{
public:
    virtual ~VxContext() = default;

    /// The settings facade. Never null while the application lives.
    virtual VxSettings *settings() const = 0;
    /// The main window.
    virtual QQuickWindow *window() const = 0;
    /// The central controller: camera, playlist, media.
    virtual VxGlobalObject *globalObject() const = 0;
    /// The four shared modes and the shader texts made from them.
    virtual VxShaderCodeBuilder *shaderBuilder() const = 0;
    /// The current source texture.
    virtual VxTextureProvider *textureProvider() const = 0;
    /// The head-mounted display's front.
    virtual VxHmd *hmd() const = 0;
    /// The interface inside the view or the headset; null until it is first needed.
    virtual VxHmdUIManager *hmdUIManager() const = 0;
    /// The scene graph's context; null until its first initialisation.
    virtual QOpenGLContext *mainContext() const = 0;
    /// A second context that shares with mainContext(), for a headset's thread.
    virtual QOpenGLContext *shareContext() const = 0;
    /// The parsed command line: "udp", "adobeplugin", "customvlc", "touchtable", "files".
    virtual QVariantMap commandLine() const = 0;
    /// True when frames come from a host plug-in instead of the program's own player.
    virtual bool sharedMemory() const = 0;
};

Q_DECLARE_INTERFACE(VxContext, "Tavro.VxContext/1.0")
