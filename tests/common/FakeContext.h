// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The application's objects for tests: each is null unless the test puts one there.

#include "app/VxContext.h"

/// Hands out what it is given and owns nothing.
class FakeContext : public VxContext
{
public:
    VxSettings *settings() const override { return settingsObject; }

    QQuickWindow *window() const override { return windowObject; }

    VxGlobalObject *globalObject() const override { return controller; }

    VxShaderCodeBuilder *shaderBuilder() const override { return builder; }

    VxTextureProvider *textureProvider() const override { return provider; }

    VxHmd *hmd() const override { return nullptr; }

    VxHmdUIManager *hmdUIManager() const override { return uiManager; }

    QOpenGLContext *mainContext() const override { return nullptr; }

    QOpenGLContext *shareContext() const override { return nullptr; }

    QVariantMap commandLine() const override { return options; }

    bool sharedMemory() const override { return false; }

    VxSettings *settingsObject = nullptr;
    QQuickWindow *windowObject = nullptr;
    VxGlobalObject *controller = nullptr;
    VxShaderCodeBuilder *builder = nullptr;
    VxTextureProvider *provider = nullptr;
    VxHmdUIManager *uiManager = nullptr;
    QVariantMap options;
};
