// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The controller among real settings, modes and textures, without the program around them.

#include "app/DetachedThread.h"
#include "app/VxGlobalObject.h"
#include "render/VxShaderCodeBuilder.h"
#include "render/VxTextureProvider.h"
#include "settings/VxSettings.h"
#include "tests/common/FakeContext.h"

#include <QObject>
#include <QThread>
#include <QTimer>

/// Makes and connects the objects as the program does. The settings have their defaults and are
/// never written. A window, if there is one, must be given before the objects are made, and go
/// before them.
class FakeApplication : public QObject, public FakeContext
{
    Q_OBJECT
    Q_INTERFACES(VxContext)

public:
    FakeApplication() { settingsObject = &m_settings; }

    /// Without a window unless one is given.
    void makeObjects(QQuickWindow *window = nullptr)
    {
        windowObject = window;
        m_settings.load();
        provider = new VxTextureProvider(this, true, false);
        controller = new VxGlobalObject(this);
        builder = new VxShaderCodeBuilder(this);
        connect(builder, &VxShaderCodeBuilder::projectionChanged, controller,
                &VxGlobalObject::onProjectionChanged);
        connect(builder, &VxShaderCodeBuilder::projectionSourceChanged, controller,
                &VxGlobalObject::onProjectionChanged);
        controller->setFovLimits();
    }

    /// The controller's timer of the next image, or its single-shot one that guards a user's move.
    QTimer *timer(bool singleShot) const
    {
        const auto timers = controller->findChildren<QTimer *>();
        for (QTimer *candidate : timers) {
            if (candidate->isSingleShot() == singleShot)
                return candidate;
        }
        return nullptr;
    }

    ~FakeApplication() override
    {
        delete controller;
        delete builder;
        delete provider;
        // The program ends without destructors while a disk is asked; a test ends with them.
        while (DetachedThread::isAtWork())
            QThread::msleep(1);
    }

private:
    VxSettings m_settings{QStringLiteral("Tavro VR Player Test")};
};
