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
        , m_saved(dup(fileno(stream)))
    {
        if (!m_file.open())
            qFatal("no temporary file");
        redirect(m_file.handle());
    }

    ~StreamCapture()
    {
        redirect(m_saved);
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
    void redirect(int to)
    {
        std::fflush(m_stream);
        dup2(to, fileno(m_stream));
    }

    FILE *m_stream;
    QTemporaryFile m_file;
    int m_saved;
};
