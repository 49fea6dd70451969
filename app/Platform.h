// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the window system's plug-in of Qt must know before the application object exists.

namespace Platform {

/// Sets environment variables where the user has set none. Before the application object.
void prepareEnvironment();

} // namespace Platform
