// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The real program as a user meets it: a process with settings of its own, driven by the mouse and
// the keyboard of the display, seen through its window.

#include "tests/common/PanoramaReference.h"

#include <QElapsedTimer>
#include <QImage>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

/// How a run differs from a user's first start with these files. All runs have a window of
/// 640x480 unless `settings` say otherwise.
struct PlayerStart
{
    QStringList arguments = {};
    /// Lines below [application] of the settings file, such as "output\\projection=1".
    QByteArrayList settings = {};
    QStringList environment = {}; ///< NAME=value
    QString directory = {}; ///< where it is started; empty: where the test runs
    QString configHome = {}; ///< settings of another run; empty: fresh ones
    bool asNobody = false; ///< as a user who may not read everything; for a test run by root
};

/// Starts the program and ends it, by force if it must. What the tests wait for comes within
/// kPatienceMs or not at all.
class PlayerProcess
{
public:
    static constexpr int kPatienceMs = 20000;

    explicit PlayerProcess(const PlayerStart &start);
    ~PlayerProcess();

    /// Waits for a line of the log that begins with the text; gives the rest of it. Lines are
    /// consumed in their order.
    bool waitForLog(const QString &beginning, QString *rest = nullptr);
    /// Waits for the main window and gives its X window; 0 if none comes.
    WId window();
    /// The dialog's X window, waiting for it; 0 if none comes.
    WId dialog();
    /// Answers the dialog and waits until the main window has the focus again.
    bool dismissDialog();
    /// True while the program has a window, without waiting for one.
    bool hasWindow() const;
    QString title();

    /// What the window shows now.
    QImage screenshot();
    /// Waits until the window shows the panorama; the last comparison otherwise. The size of the
    /// scene is that of the window.
    PanoramaReference::Comparison waitForPicture(PanoramaScene scene, const QImage &source,
                                                 int tolerance = 8);
    /// Waits until the middle of the window has nearly this colour.
    bool waitForColour(QRgb colour);
    bool waitForTitle(const QString &title);

    /// Presses keys as xdotool names them, such as "ctrl+2", one after the other.
    void keys(const QStringList &names);
    /// Opens a file by the open dialog and its keys, as a user would; false if the dialog does not
    /// come or does not close.
    bool openByDialog(const QString &path);
    /// Moves the pointer to a point of the window.
    void movePointer(QPoint point);
    static void mouse(const QStringList &xdotoolArguments);
    /// Presses at a point of the window, moves the pointer by so much and lets go.
    void drag(QPoint from, QPoint way);

    void resize(QSize size);

    void terminate(int signal);
    /// Ends the program as its user does: "window closed", "Ctrl+Q", or the name of a signal.
    void end(const QString &way);
    /// The exit code when the process has ended by itself; -1 if it does not, or crashed.
    int waitForEnd();
    /// What stands on the standard error beside the log: should be empty.
    QString noise();

    static QString settingsFile(const QString &configHome);

private:
    void readLog();
    QList<WId> windows() const;

    QTemporaryDir m_scratch;
    QString m_configHome;
    QProcess m_process;
    WId m_window = 0;
    QStringList m_log; // without the category's prefix, not yet consumed
    QString m_noise;
};

/// Fails a test unless nearly all pixels of a PanoramaReference::Comparison agree.
#define VERIFY_PICTURE(comparison)                                                                 \
    do {                                                                                           \
        const PanoramaReference::Comparison result = comparison;                                   \
        QVERIFY2(result.share >= 0.99, result.text().constData());                                 \
    } while (false)

/// Runs a program of the desktop and gives its output.
QString runTool(const QString &program, const QStringList &arguments);
