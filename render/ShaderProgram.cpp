// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/ShaderProgram.h"

#include <QOpenGLShaderProgram>

#include <memory>

Q_LOGGING_CATEGORY(lcShader, "tavro.shader")

namespace {

void logSource(const char *stage, const QByteArray &source)
{
    qCWarning(lcShader).nospace() << stage << " source:";
    int number = 0;
    for (const QByteArray &line : source.split('\n'))
        qCWarning(lcShader).noquote().nospace() << ++number << ": " << line;
}

} // namespace

QOpenGLShaderProgram *ShaderProgram::build(const char *name, const QByteArray &vertexSource,
                                           const QByteArray &fragmentSource)
{
    auto program = std::make_unique<QOpenGLShaderProgram>();
    if (program->addCacheableShaderFromSourceCode(QOpenGLShader::Vertex, vertexSource)
        && program->addCacheableShaderFromSourceCode(QOpenGLShader::Fragment, fragmentSource)
        && program->link())
        return program.release();

    qCWarning(lcShader).noquote().nospace()
        << "program \"" << name << "\" does not build: " << program->log();
    logSource("vertex", vertexSource);
    logSource("fragment", fragmentSource);
    return nullptr;
}
