// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Platform.h"

#include <QByteArray>

namespace Platform {

void prepareEnvironment()
{
    // Under Wayland the window system gives no native events and no position to the program; where
    // X11 is there too, it is the better choice.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")
        && qEnvironmentVariableIsSet("WAYLAND_DISPLAY") && qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    // The panorama asks for the next frame as soon as one is shown; waiting for idle time in
    // between only costs frames.
    if (!qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME"))
        qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");
    // The window does without a depth and a stencil buffer: nothing in it lies behind something
    // else, and what is clipped is upright. Where the processor draws they cost each frame a
    // twentieth, and keep the driver from composing the panorama by copying it; elsewhere they cost
    // memory. Who draws is not known yet: Qt reads this before there is a context.
    for (const char *name : {"QSG_NO_DEPTH_BUFFER", "QSG_NO_STENCIL_BUFFER"}) {
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, "1");
    }
}

} // namespace Platform
