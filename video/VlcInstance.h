// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// libvlc's engine, one for the process.

struct libvlc_instance_t;

/// Made at the first call, with the arguments that are set then; null when libvlc refuses them,
/// and then asked again at the next call. Lives until the process ends. Main thread only.
libvlc_instance_t *vlcInstance();

/// Begins to make it on a thread of its own: it looks at every plug-in of libvlc, which takes
/// longer than making the window. Once, before the first vlcInstance(). Main thread only.
void beginVlcInstance();

/// Gives back to the system what the last medium has freed. Takes milliseconds; on any thread.
void returnFreeMemory();
