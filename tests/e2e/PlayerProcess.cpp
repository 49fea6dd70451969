// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/e2e/PlayerProcess.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <sys/types.h>

#include <csignal>
#include <functional>

namespace {

constexpr int kPollMs = 40;
constexpr int kNobody = 65534;

WId activeWindow()
{
    return runTool("xdotool", {"getactivewindow"}).toULongLong();
}

/// Asks until the answer is yes or patience is at its end.
bool poll(const std::function<bool()> &condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > PlayerProcess::kPatienceMs)
            return false;
        QTest::qWait(kPollMs);
    }
    return true;
}

} // namespace

QString runTool(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

PlayerProcess::PlayerProcess(const PlayerStart &start)
    : m_configHome(start.configHome.isEmpty() ? m_scratch.path() : start.configHome)
{
    const QString settings = settingsFile(m_configHome);
    if (!QFile::exists(settings)) {
        QDir().mkpath(QFileInfo(settings).path());
        QFile file(settings);
        if (file.open(QIODevice::WriteOnly)) {
            // The defaults come first: a later line of the same key wins.
            file.write("[application]\nwindow\\width=640\nwindow\\height=480\n");
            file.write(start.settings.join('\n') + '\n');
        }
    }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_CONFIG_HOME", m_configHome);
    environment.insert("QT_FORCE_STDERR_LOGGING", "1");
    environment.insert("QT_LOGGING_RULES", "tavro.timing.debug=true;tavro.media.info=true");
    environment.insert("QT_MESSAGE_PATTERN", "%{category}: %{message}");
    for (const QString &variable : start.environment)
        environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    if (!start.directory.isEmpty())
        m_process.setWorkingDirectory(start.directory);

    QStringList command = QStringList{TAVRO_PLAYER} + start.arguments;
    if (start.asNobody) {
        runTool("chown", {"-R", QString::number(kNobody), m_configHome});
        const QString id = QString::number(kNobody);
        command = QStringList{"setpriv", "--reuid", id, "--regid", id, "--clear-groups"} + command;
    }
    m_process.start(command.takeFirst(), command);
}

PlayerProcess::~PlayerProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(kPatienceMs)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

QString PlayerProcess::settingsFile(const QString &configHome)
{
    return configHome + "/Tavro/Tavro VR Player 2.3.conf";
}

void PlayerProcess::readLog()
{
    static const QStringList categories{"tavro.timing: ", "tavro.media: "};
    m_process.waitForReadyRead(1);
    while (m_process.canReadLine()) {
        const QString line = QString::fromUtf8(m_process.readLine());
        const auto ours = std::find_if(categories.begin(), categories.end(),
                                       [&](const QString &c) { return line.startsWith(c); });
        if (ours != categories.end())
            m_log.append(line.mid(ours->size()).trimmed());
        else
            m_noise += line;
    }
}

bool PlayerProcess::waitForLog(const QString &beginning, QString *rest)
{
    return poll([&] {
        readLog();
        while (!m_log.isEmpty()) {
            const QString line = m_log.takeFirst();
            if (!line.startsWith(beginning))
                continue;
            if (rest)
                *rest = line.mid(beginning.size());
            return true;
        }
        return false;
    });
}

QList<WId> PlayerProcess::windows() const
{
    // Asked of the window manager: a window that it does not know yet gets no keys either.
    QList<WId> ids;
    const QString list = runTool("wmctrl", {"-l", "-p"});
    for (const QString &line : list.split('\n')) {
        const QStringList fields = line.split(' ', Qt::SkipEmptyParts);
        if (fields.size() > 2 && fields[2].toLongLong() == m_process.processId())
            ids.append(fields[0].toULongLong(nullptr, 16));
    }
    return ids;
}

bool PlayerProcess::hasWindow() const
{
    return !windows().isEmpty();
}

WId PlayerProcess::window()
{
    if (m_window == 0)
        poll([this] {
            const QList<WId> ids = windows();
            m_window = ids.isEmpty() ? 0 : ids.first();
            return m_window != 0 || m_process.state() == QProcess::NotRunning;
        });
    return m_window;
}

WId PlayerProcess::dialog()
{
    WId result = 0;
    poll([&] {
        for (const WId id : windows()) {
            if (id != window())
                result = id;
        }
        // Keys reach the dialog once it has the focus.
        return result != 0 && activeWindow() == result;
    });
    return result;
}

bool PlayerProcess::dismissDialog()
{
    if (dialog() == 0)
        return false;
    keys({"Return"});
    return poll([this] { return activeWindow() == window(); });
}

QString PlayerProcess::title()
{
    return runTool("xdotool", {"getwindowname", QString::number(window())});
}

QImage PlayerProcess::screenshot()
{
    return QGuiApplication::primaryScreen()->grabWindow(window()).toImage();
}

PanoramaReference::Comparison PlayerProcess::waitForPicture(PanoramaScene scene,
                                                            const QImage &source, int tolerance)
{
    PanoramaReference::Comparison result;
    QImage expected;
    QImage actual;
    const bool found = poll([&] {
        actual = screenshot();
        if (actual.size() != expected.size()) {
            scene.item = actual.size();
            expected = PanoramaReference::render(scene, source);
        }
        result = PanoramaReference::compare(actual, expected, tolerance);
        return result.share >= 0.99;
    });
    if (!found) {
        const QString name =
            QString("failed_%1_%2").arg(QTest::currentTestFunction(), QTest::currentDataTag());
        actual.save(QDir::temp().filePath(name + "_actual.png"));
        expected.save(QDir::temp().filePath(name + "_expected.png"));
    }
    return result;
}

bool PlayerProcess::waitForColour(QRgb colour)
{
    return poll([&] {
        const QImage picture = screenshot();
        if (picture.isNull())
            return false;
        const QRgb middle = picture.pixel(picture.rect().center());
        const auto near = [](int a, int b) { return std::abs(a - b) < 12; };
        return near(qRed(middle), qRed(colour)) && near(qGreen(middle), qGreen(colour))
            && near(qBlue(middle), qBlue(colour));
    });
}

bool PlayerProcess::waitForTitle(const QString &expected)
{
    return poll([&] { return title() == expected; });
}

void PlayerProcess::keys(const QStringList &names)
{
    const QString id = QString::number(window());
    // A key goes to the window that has the focus, which the window manager gives in its own time.
    poll([&] { return runTool("xdotool", {"getwindowfocus"}).toULongLong() != 0; });
    for (const QString &name : names) {
        runTool("xdotool", {"key", "--clearmodifiers", name});
        QTest::qWait(kPollMs);
    }
}

bool PlayerProcess::openByDialog(const QString &path)
{
    keys({"ctrl+o"});
    const WId opened = dialog();
    if (opened == 0)
        return false;
    return poll([&] {
        // Qt's dialog empties its line when the folder's list arrives, and its list of completions
        // may take the Return: on a busy machine both happen after the path was typed.
        keys({"ctrl+a"});
        runTool("xdotool", {"type", "--delay", "5", path});
        keys({"Return"});
        for (int i = 0; i < 25 && windows().contains(opened); ++i)
            QTest::qWait(kPollMs);
        return !windows().contains(opened);
    });
}

void PlayerProcess::movePointer(QPoint point)
{
    runTool("xdotool",
            {"mousemove", "--sync", "--window", QString::number(window()),
             QString::number(point.x()), QString::number(point.y())});
    QTest::qWait(kPollMs);
}

void PlayerProcess::mouse(const QStringList &xdotoolArguments)
{
    runTool("xdotool", xdotoolArguments);
    QTest::qWait(kPollMs);
}

void PlayerProcess::drag(QPoint from, QPoint way)
{
    movePointer(from);
    mouse({"mousedown", "1"});
    movePointer(from + way);
    mouse({"mouseup", "1"});
}

void PlayerProcess::terminate(int signal)
{
    ::kill(pid_t(m_process.processId()), signal);
}

void PlayerProcess::resize(QSize size)
{
    runTool("xdotool",
            {"windowsize", "--sync", QString::number(window()), QString::number(size.width()),
             QString::number(size.height())});
}

void PlayerProcess::end(const QString &way)
{
    if (way == "window closed")
        runTool("wmctrl", {"-i", "-c", QString::number(window())});
    else if (way == "Ctrl+Q")
        keys({"ctrl+q"});
    else
        terminate(way == "SIGINT" ? SIGINT : SIGTERM);
}

int PlayerProcess::waitForEnd()
{
    poll([this] {
        readLog();
        return m_process.state() == QProcess::NotRunning;
    });
    if (m_process.state() != QProcess::NotRunning || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

QString PlayerProcess::noise()
{
    readLog();
    return m_noise;
}
