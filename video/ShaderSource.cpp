// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/ShaderSource.h"

namespace {

const QString kHeader = QStringLiteral("/*HEADER*/");
const QString kUniforms = QStringLiteral("/*UNIFORMS*/");
const QString kLocals = QStringLiteral("/*LOCALS*/");
const QString kUserCode = QStringLiteral("/*USERCODE*/");
const QString kFinalCode = QStringLiteral("/*FINALCODE*/");

} // namespace

ShaderSource::ShaderSource()
    : m_text(QStringLiteral("/*HEADER*/\n"
                            "/*UNIFORMS*/\n"
                            "void main() {\n"
                            "  /*LOCALS*/\n"
                            "  /*USERCODE*/\n"
                            "  /*FINALCODE*/\n"
                            "}\n"))
{ }

void ShaderSource::addHeader(const QString &line)
{
    addAt(kHeader, line);
}

void ShaderSource::addUniform(const QString &type, const QString &name)
{
    addAt(kUniforms, QStringLiteral("uniform %1 %2;").arg(type, name));
}

void ShaderSource::addSampler(GLenum target, const QString &name)
{
    addUniform(target == GL_TEXTURE_RECTANGLE ? QStringLiteral("sampler2DRect")
                                              : QStringLiteral("sampler2D"),
               name);
}

void ShaderSource::addLocal(const QString &type, const QString &names)
{
    addAt(kLocals, QStringLiteral("  %1 %2;").arg(type, names));
}

void ShaderSource::addUserCode(const QString &code)
{
    addAt(kUserCode, code);
}

void ShaderSource::addFinalCode(const QString &code)
{
    addAt(kFinalCode, code);
}

// The marker follows each piece, so that the next one lands behind it.
void ShaderSource::addAt(const QString &marker, const QString &piece)
{
    m_text.replace(marker, QStringLiteral("%1\n%2").arg(piece, marker));
}
