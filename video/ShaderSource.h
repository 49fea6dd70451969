// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The text of a fragment shader that is put together piece by piece.

#include <QString>
#include <qopengl.h>

/// Pieces of one kind stand in the order in which they were added; no piece ends in a line feed of
/// its own unless said.
class ShaderSource
{
public:
    ShaderSource();

    /// A line before everything else, such as "#version 120".
    void addHeader(const QString &line);
    void addUniform(const QString &type, const QString &name);
    /// A uniform for reading a texture of `target`.
    void addSampler(GLenum target, const QString &name);
    /// Variables of main(); `names` may be a list with commas.
    void addLocal(const QString &type, const QString &names);
    /// Statements of main().
    void addUserCode(const QString &code);
    /// Statements at the end of main().
    void addFinalCode(const QString &code);

    const QString &text() const { return m_text; }

private:
    void addAt(const QString &marker, const QString &piece);

    QString m_text;
};
