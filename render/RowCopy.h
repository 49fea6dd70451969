// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Composing an item's framebuffer into the window, on Mesa's software driver. As Qt does it each
// pixel runs through a shader, which takes a quarter of the time of a panorama. The driver works
// row by row in memory instead where nothing but a texture is drawn, in the window's byte order, as
// a rectangle that it recognises, into a window without depth and stencil buffer.

class QOpenGLFunctions;
class QSGNode;

namespace RowCopy {

/// Gives the colour texture of the bound framebuffer the byte order of windows; what it held is
/// lost. Does nothing on other drivers. Leaves no texture bound.
void prepareFramebuffer(QOpenGLFunctions *gl);

/// Draws the four corners of a painted item's \a node as a fan instead of a strip, of which the
/// driver would make two triangles. After each update of the node by its item.
void prepareNode(QSGNode *node);

} // namespace RowCopy
