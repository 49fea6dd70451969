// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one place where shader programs are compiled and linked. A failure is silent for the user;
// the category `tavro.shader` gets what a developer needs to find it.

#include <QByteArray>
#include <QLoggingCategory>

class QOpenGLShaderProgram;

Q_DECLARE_LOGGING_CATEGORY(lcShader)

namespace ShaderProgram {

/// Compiles and links a program; the texts pass through Qt, which adds what desktop GL lacks of
/// the precision qualifiers. Returns a linked program that the caller owns, or null after logging
/// `name`, the driver's log and the numbered source. Needs a current context, of the same share
/// group at deletion. Compiling takes milliseconds and locations are looked up by name: do both
/// when a mode changes, never per frame.
[[nodiscard]] QOpenGLShaderProgram *build(const char *name, const QByteArray &vertexSource,
                                          const QByteArray &fragmentSource);

} // namespace ShaderProgram
