// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Whether the processor draws. What is good there, where drawing and decoding share the processors
// and a driver's quirks cost or save a quarter of a frame, is measured there alone, and not done on
// machines with a graphics card. This is its only switch.

namespace SoftwareOpenGl {

/// Finds it out from the current context, the scene graph's, once per process; later calls do
/// nothing. Whoever has that context first calls it. TAVRO_OPENGL=software or =hardware in the
/// environment says otherwise, to compare the two on one machine.
void detect();

/// True if OpenGL is drawn by the processor; false before detect(). On any thread, also inside of
/// the driver.
bool isInUse();

/// By what a driver calls itself, GL_RENDERER.
bool isSoftware(const char *renderer);

} // namespace SoftwareOpenGl
