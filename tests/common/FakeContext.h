// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The application's objects for tests: each is null unless the test puts one there.

#include "app/VxContext.h"

/// Hands out what it is given and owns nothing.
class FakeContext : public VxContext
{
public:
    VxSettings *settings() const override { return settingsObject; }

    QQuickWindow *window() const override { return nullptr; }

    VxGlobalObject *globalObject() const override { return nullptr; }

    VxShaderCodeBuilder *shaderBuilder() const override { return nullptr; }

    VxTextureProvider *textureProvider() const override { return nullptr; }

    VxHmd *hmd() const override { return nullptr; }

    VxHmdUIManager *hmdUIManager() const override { return nullptr; }

    QOpenGLContext *mainContext() const override { return nullptr; }

    QOpenGLContext *shareContext() const override { return nullptr; }

    QVariantMap commandLine() const override { return options; }

    bool sharedMemory() const override { return false; }

    VxSettings *settingsObject = nullptr;
    QVariantMap options;
};
