// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A current OpenGL context for tests that need no window.

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

class OffscreenGl
{
public:
    OffscreenGl()
    {
        surface.create();
        ok = context.create() && context.makeCurrent(&surface);
    }

    QOffscreenSurface surface;
    QOpenGLContext context;
    bool ok = false;
};
