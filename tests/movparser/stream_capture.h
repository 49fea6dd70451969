// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What this process writes to its standard error stream while an object of this class lives.

#include <QtCore/QTemporaryFile>

#include <unistd.h>

#include <cstdio>

class StderrCapture
{
public:
    StderrCapture()
    {
        if (!m_file.open())
            qFatal("no temporary file");
        std::fflush(stderr);
        m_saved = dup(STDERR_FILENO);
        dup2(m_file.handle(), STDERR_FILENO);
    }

    ~StderrCapture()
    {
        std::fflush(stderr);
        dup2(m_saved, STDERR_FILENO);
        ::close(m_saved);
    }

    StderrCapture(const StderrCapture &) = delete;
    StderrCapture &operator=(const StderrCapture &) = delete;

    QByteArray text()
    {
        std::fflush(stderr);
        QFile reader(m_file.fileName());
        return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray("not readable");
    }

private:
    QTemporaryFile m_file;
    int m_saved = -1;
};
