// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A folder of its own for the settings files of a test program. It must exist before the first
// QSettings: Qt looks up the place once per process.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class ScratchConfig
{
public:
    ScratchConfig() { qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_dir.path())); }

    /// Where the settings of `application` lie.
    static QString file(const QString &application)
    {
        return QFile::decodeName(qgetenv("XDG_CONFIG_HOME")) + "/Tavro/" + application + ".conf";
    }

    /// Puts a settings file there as a text editor would.
    static void write(const QString &application, const QByteArray &text)
    {
        const QString path = file(application);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly));
        QCOMPARE(out.write(text), qint64(text.size()));
    }

private:
    QTemporaryDir m_dir;
};
