// SPDX-License-Identifier: GPL-3.0-or-later
// What the player costs beside the least that must be paid: time to the first panorama frame,
// frames a second while the camera turns, CPU time while nobody moves. Player and floor run in
// turn, so that the machine and what else it does meet both alike; the figures are ratios.
// Needs a display with a window manager and xdotool:
//   tests/common/with_display --desktop build/dev/bin/bench_start_fps_idle

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <vector>

namespace {

constexpr int kPatienceMs = 30000;
constexpr int kMeasuredMs = 5000;

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double least(const std::vector<double> &values)
{
    return values.empty() ? 0 : *std::min_element(values.begin(), values.end());
}

/// A picture that is as hard to decode as a photograph: light that changes slowly, shapes of all
/// sizes, and grain.
void writePhoto(const QString &file, QSize size)
{
    QImage picture(size, QImage::Format_RGB32);
    const auto noise = [](unsigned x, unsigned y) {
        unsigned value = x * 374761393U + y * 668265263U;
        value = (value ^ (value >> 13)) * 1274126177U;
        return int((value ^ (value >> 16)) & 31U) - 16;
    };
    for (int y = 0; y < size.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(picture.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            int shapes = 0;
            for (unsigned scale = 0; scale < 7; scale += 2)
                shapes += noise(unsigned(x) >> scale, unsigned(y) >> scale) * int(scale + 2) / 4;
            const int light = 200 * y / size.height();
            row[x] = qRgb(std::clamp(light + shapes, 0, 255), std::clamp(110 + shapes, 0, 255),
                          std::clamp(220 - light + shapes, 0, 255));
        }
    }
    picture.save(file, "JPEG", 90);
}

/// A program that is measured: it speaks on its standard error and ends by SIGTERM.
class Subject
{
public:
    Subject(const QString &program, const QStringList &arguments, const QString &config)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_LOGGING_RULES", "tavro.timing.debug=true");
        environment.insert("QT_FORCE_STDERR_LOGGING", "1");
        environment.insert("XDG_CONFIG_HOME", config);
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_timer.start();
        m_process.start(program, arguments);
    }

    ~Subject()
    {
        m_process.terminate();
        if (!m_process.waitForFinished(kPatienceMs))
            m_process.kill();
    }

    qint64 pid() const { return m_process.processId(); }

    /// The next line that holds the text, and the milliseconds from the start to it; empty if none.
    QString waitFor(const char *text, double *milliseconds = nullptr)
    {
        while (m_timer.elapsed() < kPatienceMs) {
            while (m_process.canReadLine()) {
                const QString line = QString::fromLocal8Bit(m_process.readLine()).trimmed();
                if (line.contains(QLatin1String(text))) {
                    if (milliseconds)
                        *milliseconds = double(m_timer.nsecsElapsed()) / 1e6;
                    return line;
                }
            }
            if (!m_process.waitForReadyRead(kPatienceMs))
                break;
        }
        return {};
    }

private:
    QProcess m_process;
    QElapsedTimer m_timer;
};

double lastNumber(const QString &line)
{
    return line.section(QLatin1Char(' '), -1).toDouble();
}

/// CPU seconds of each thread of a process, by the thread's name.
QMap<QString, double> threadTimes(qint64 pid)
{
    QMap<QString, double> times;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + "/comm"));
        QFile time(tasks.filePath(task + "/schedstat")); // nanoseconds on a processor come first
        if (name.open(QIODevice::ReadOnly) && time.open(QIODevice::ReadOnly))
            times[QString::fromLocal8Bit(name.readAll()).trimmed()] +=
                time.readAll().split(' ').first().toDouble() / 1e9;
    }
    return times;
}

double sum(const QMap<QString, double> &times)
{
    double total = 0;
    for (const double time : times)
        total += time;
    return total;
}

/// CPU seconds that a process uses from now on in the measured time, by thread.
QMap<QString, double> idleTimes(qint64 pid)
{
    const QMap<QString, double> before = threadTimes(pid);
    QThread::msleep(kMeasuredMs);
    QMap<QString, double> times = threadTimes(pid);
    for (auto time = times.begin(); time != times.end(); ++time)
        *time -= before.value(time.key());
    return times;
}

class Bench
{
public:
    Bench(const QString &player, int rounds)
        : m_player(player)
        , m_rounds(rounds)
        , m_photo(m_scratch.filePath("photo.jpg"))
    {
        QDir(m_scratch.path()).mkpath("config/Tavro");
        QFile settings(m_scratch.filePath("config/Tavro/Tavro VR Player 2.3.conf"));
        if (settings.open(QIODevice::WriteOnly))
            settings.write(
                "[application]\n"
                "window\\width=1280\n"
                "window\\height=720\n"
                "general\\cameraMoveSteps=10\n"
                "playlist\\imageDisplayDurationNone=true\n");
    }

    void start(QSize size)
    {
        writePhoto(m_photo, size);
        std::vector<double> ratios, player, reading, view;
        for (int round = 0; round <= m_rounds; ++round) {
            double readTime = 0, viewTime = 0, playerTime = 0;
            readTime = lastNumber(floor({"read", m_photo}).waitFor("read "));
            floor({"view"}).waitFor("first frame", &viewTime);
            subject().waitFor("first panorama frame", &playerTime);
            if (round == 0) // fills the caches of files
                continue;
            reading.push_back(readTime);
            view.push_back(viewTime);
            player.push_back(playerTime);
            ratios.push_back(playerTime / (readTime + viewTime));
        }
        out() << QStringLiteral(
                     "start, %1x%2, %9 MB: player %3 ms, reader %4 ms, empty view %5 ms; ratio "
                     "of the medians %6, of the least %7, median of the ratios %8\n")
                     .arg(size.width())
                     .arg(size.height())
                     .arg(median(player), 0, 'f', 0)
                     .arg(median(reading), 0, 'f', 0)
                     .arg(median(view), 0, 'f', 0)
                     .arg(median(player) / (median(reading) + median(view)), 0, 'f', 2)
                     .arg(least(player) / (least(reading) + least(view)), 0, 'f', 2)
                     .arg(median(ratios), 0, 'f', 2)
                     .arg(double(QFileInfo(m_photo).size()) / 1e6, 0, 'f', 1);
        out().flush();
    }

    void framesPerSecond()
    {
        writePhoto(m_photo, {4096, 2048});
        std::vector<double> players, quads, written;
        for (int round = 0; round < m_rounds; ++round) {
            quads.push_back(lastNumber(floor({"quad", m_photo}).waitFor("frames ")));
            written.push_back(lastNumber(floor({"quad-as-written", m_photo}).waitFor("frames ")));
            Subject player = subject();
            player.waitFor("first panorama frame");
            // The window manager gives the window the focus; a held key then turns the camera.
            QThread::msleep(500);
            QProcess::execute("xdotool", {"keydown", "Left"});
            std::vector<double> rates;
            player.waitFor("frames a second:"); // a second that began without the key
            player.waitFor("frames a second:");
            for (int second = 0; second < 4; ++second)
                rates.push_back(lastNumber(player.waitFor("frames a second:")));
            QProcess::execute("xdotool", {"keyup", "Left"});
            players.push_back(median(rates));
        }
        out() << QStringLiteral(
                     "frames a second, 1280x720, turning: player %1; bare window with the "
                     "specialised quad %2, ratio %3; with the texts as written %4, ratio %5\n")
                     .arg(median(players), 0, 'f', 1)
                     .arg(median(quads), 0, 'f', 1)
                     .arg(median(players) / median(quads), 0, 'f', 2)
                     .arg(median(written), 0, 'f', 1)
                     .arg(median(players) / median(written), 0, 'f', 2);
        out().flush();
    }

    void idle()
    {
        writePhoto(m_photo, {4096, 2048});
        double floorTime = 0;
        {
            Subject still = floor({"still"});
            still.waitFor("first frame");
            QThread::msleep(2000);
            floorTime = sum(idleTimes(still.pid()));
        }
        out() << QStringLiteral("idle for %1 s: bare window %2 s of CPU time\n")
                     .arg(kMeasuredMs / 1000)
                     .arg(floorTime, 0, 'f', 3);
        {
            Subject player = subject();
            player.waitFor("first panorama frame");
            tellIdle("still picture", player);
        }
        const QString film = m_scratch.filePath("film.mp4");
        QProcess::execute("ffmpeg",
                          QStringLiteral("-loglevel error -f lavfi -i testsrc2=s=1920x1080:r=25 "
                                         "-t 60 -c:v libx264 -preset ultrafast -pix_fmt yuv420p")
                                  .split(QLatin1Char(' '))
                              << film);
        Subject player(m_player, {film}, m_scratch.filePath("config"));
        player.waitFor("first panorama frame");
        QThread::msleep(1000);
        QProcess::execute("xdotool", {"key", "space"});
        tellIdle("paused film, 1920x1080", player);
    }

private:
    static void tellIdle(const char *what, const Subject &player)
    {
        QThread::msleep(3000);
        const QMap<QString, double> times = idleTimes(player.pid());
        out() << QStringLiteral("  %1: %2 s\n").arg(what).arg(sum(times), 0, 'f', 3);
        for (auto time = times.begin(); time != times.end(); ++time) {
            if (*time >= 0.005)
                out() << QStringLiteral("    %1 %2 s\n").arg(time.key()).arg(*time, 0, 'f', 3);
        }
        out().flush();
    }

    Subject floor(const QStringList &arguments) const
    {
        const QString program = QCoreApplication::applicationDirPath() + "/bench_floors";
        return Subject(program, arguments, m_scratch.filePath("config"));
    }

    Subject subject() const { return Subject(m_player, {m_photo}, m_scratch.filePath("config")); }

    QTemporaryDir m_scratch;
    QString m_player;
    int m_rounds;
    QString m_photo;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption rounds("rounds", "Times each thing is measured.", "n", "9");
    const QCommandLineOption player("player", "The program to measure.", "file",
                                    QCoreApplication::applicationDirPath() + "/tavro-vr-player");
    parser.addOptions({rounds, player});
    parser.addPositionalArgument("what", "start, frames, idle; all by default.", "[what...]");
    parser.addHelpOption();
    parser.process(application);
    const QStringList what = parser.positionalArguments();
    const auto wanted = [&](const char *name) {
        return what.isEmpty() || what.contains(QLatin1String(name));
    };

    Bench bench(parser.value(player), parser.value(rounds).toInt());
    if (wanted("start")) {
        bench.start({4096, 2048});
        bench.start({8192, 4096});
    }
    if (wanted("frames"))
        bench.framesPerSecond();
    if (wanted("idle"))
        bench.idle();
    return 0;
}
