// SPDX-License-Identifier: GPL-3.0-or-later
// The entry point.
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/DetachedThread.h"
#include "app/DisplayLoss.h"
#include "app/EndGuard.h"
#include "app/PicturePrefetch.h"
#include "app/Platform.h"
#include "app/VxGlobalObject.h"
#include "settings/VxVlcOptions.h"

#include <QDir>
#include <QLoggingCategory>
#include <QProcess>
#include <QThread>
#include <QThreadPool>

#include <unistd.h>

#include <chrono>
#include <clocale>
#include <exception>
#include <memory>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcApp, "tavro.app")

// Longer than any decoder of a healthy disk takes for one picture.
constexpr std::chrono::seconds kEndPatience(10);

QStringList textsOf(int argc, char **argv)
{
    QStringList texts;
    for (int i = 0; i < argc; ++i)
        texts.append(QString::fromLocal8Bit(argv[i]));
    return texts;
}

struct Outcome
{
    int exitCode = 0;
    QString program;
    QStringList arguments;
};

/// Starts the program anew if it ended for that.
void relaunch(const Outcome &outcome, const QString &startDirectory)
{
    if (outcome.exitCode != VxGlobalObject::kRestartExitCode)
        return;
    QThread::sleep(1);
    // Relative paths among the arguments count from where this process was started.
    QProcess::startDetached(outcome.program, outcome.arguments, startDirectory);
}

Outcome runApplication(int &argc, char **argv, const QString &startDirectory)
{
    Outcome outcome;
    std::unique_ptr<EndGuard> guard; // outlives the application object, whose end may hang too
    // Decoding is the longest part of the start, so it begins first.
    std::unique_ptr<PicturePrefetch> prefetch =
        PicturePrefetch::begin(CommandLine::firstFile(textsOf(argc, argv), startDirectory));
    Application application(argc, argv);
    if (prefetch)
        prefetch->continueWithPlugins();
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    outcome.program = QCoreApplication::applicationFilePath();
    outcome.arguments = QCoreApplication::arguments().mid(1);
    qputenv("VLC_PLUGIN_PATH", "vlc/plugins");
    VxVlcOptions options;
    VxVlcOptions::setInstance(&options);
    application.init(startDirectory, std::move(prefetch));
    const auto beginEnd = [&](int exitCode) {
        outcome.exitCode = exitCode;
        if (!guard)
            guard = std::make_unique<EndGuard>(kEndPatience, [outcome, startDirectory] {
                relaunch(outcome, startDirectory);
                _exit(outcome.exitCode);
            });
        // Guarded already, for the disk may be the one that hangs, and before the players are asked
        // to stop, which may be in vain.
        application.saveSettings();
    };
    QObject::connect(application.globalObject(), &VxGlobalObject::ending, beginEnd);
    DisplayLoss::watch([&application] { application.saveSettings(); });
    beginEnd(Application::exec());
    DisplayLoss::endBegins();
    const bool ended = application.teardown();
    VxVlcOptions::setInstance(nullptr);
    if (!ended) {
        // A snapshot that is being written, which the application object would wait for.
        QThreadPool::globalInstance()->waitForDone();
        guard.reset(); // it would start the program anew as well
        relaunch(outcome, startDirectory);
        _exit(outcome.exitCode);
    }
    return outcome;
}

} // namespace

int main(int argc, char **argv)
{
    // Qt would do it with the application object, but paths are read before.
    std::setlocale(LC_ALL, "");
    Platform::prepareEnvironment();
    const QString startDirectory = QDir::currentPath();
    try {
        const Outcome outcome = runApplication(argc, argv, startDirectory);
        relaunch(outcome, startDirectory);
        if (DetachedThread::isAtWork())
            _exit(outcome.exitCode);
        return outcome.exitCode;
    } catch (const std::exception &exception) {
        qCCritical(lcApp) << exception.what();
        throw;
    } catch (...) {
        qCCritical(lcApp) << "Unknown exception";
        throw;
    }
}
