// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What Qt must know of the window before the application object exists.

namespace Platform {

/// Sets environment variables where the user has set none. Before the application object.
void prepareEnvironment();

} // namespace Platform
