// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What this process writes to a standard stream while an object of this class lives.

#include <QtCore/QTemporaryFile>

#include <unistd.h>

#include <cstdio>

class StreamCapture
{
public:
    explicit StreamCapture(FILE *stream = stderr)
        : m_stream(stream)
    {
        if (!m_file.open())
            qFatal("no temporary file");
        std::fflush(m_stream);
        m_saved = dup(fileno(m_stream));
        dup2(m_file.handle(), fileno(m_stream));
    }

    ~StreamCapture()
    {
        std::fflush(m_stream);
        dup2(m_saved, fileno(m_stream));
        ::close(m_saved);
    }

    StreamCapture(const StreamCapture &) = delete;
    StreamCapture &operator=(const StreamCapture &) = delete;

    QByteArray text()
    {
        std::fflush(m_stream);
        QFile reader(m_file.fileName());
        return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray("not readable");
    }

private:
    FILE *m_stream;
    QTemporaryFile m_file;
    int m_saved = -1;
};
