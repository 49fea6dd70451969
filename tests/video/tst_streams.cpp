// SPDX-License-Identifier: GPL-3.0-or-later
// Media that come over the network, all of it loopback: the picture or one error, and a stop that
// nobody can hold up.

#include "settings/VxVlcOptions.h"
#include "tests/video/Clips.h"
#include "tests/video/PlayerFixture.h"
#include "tests/video/PlayerTestMain.h"
#include "tests/video/StreamServer.h"
#include "video/BoundedWait.h"

#include <QUdpSocket>

#include <memory>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kPatienceMs = 15000;
constexpr int kUnnoticedMs = 3000;
#else
constexpr int kPatienceMs = 1500;
constexpr int kUnnoticedMs = 300;
#endif

quint16 freeTcpPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

quint16 freeUdpPort()
{
    QUdpSocket socket;
    socket.bind(QHostAddress::LocalHost);
    return socket.localPort();
}

/// A program that serves as long as this lives.
class Helper
{
public:
    Helper(const QString &program, const QStringList &arguments, const QString &folder)
    {
        m_process.setWorkingDirectory(folder);
        m_process.start(program, arguments);
        m_process.waitForStarted();
    }

    ~Helper()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

} // namespace

class TestStreams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void http_data();
    void http();
    void selfSignedCertificate();
    void datagrams();
    void nobodyListens_data();
    void nobodyListens();
    void nobodyAnswers_data();
    void nobodyAnswers();

private:
    void expectOneError();
    void expectStopAtOnce();

    VxVlcOptions m_options;
    Clips m_clips;
    QMap<QString, QByteArray> m_files;
    std::unique_ptr<PlayerFixture> m_fixture;
};

void TestStreams::initTestCase()
{
    VxVlcOptions::setInstance(&m_options);
    const QString clip = QStringLiteral(
        "-f lavfi -i testsrc=s=320x160:r=25:d=3 -f lavfi -i sine=duration=3 "
        "-c:v libx264 -preset ultrafast -g 10 -pix_fmt yuv420p -c:a aac ");
    QVERIFY(m_clips.make(QStringLiteral("clip.mp4"), clip + "-movflags +faststart"));
    QVERIFY(m_clips.make(QStringLiteral("clip.ts"), clip));
    QVERIFY(m_clips.make(QStringLiteral("live.m3u8"),
                         clip + "-hls_time 1 -hls_list_size 0 -hls_segment_filename %1/part%d.ts"));
    for (const char *name : {"clip.mp4", "live.m3u8", "part0.ts", "part1.ts", "part2.ts"})
        m_files.insert(QString::fromLatin1(name), m_clips.read(QString::fromLatin1(name)));
    m_files.insert(QStringLiteral("gone.m3u8"),
                   m_clips.read(QStringLiteral("live.m3u8")).replace("part", "gone"));
}

void TestStreams::expectOneError()
{
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Error, 20000));
    QTest::qWait(300);
    QCOMPARE(m_fixture->errors.size(), 1);
    QCOMPARE(m_fixture->states.last(), int(VxVlcPlayerQml::Error));
}

void TestStreams::expectStopAtOnce()
{
    QElapsedTimer elapsed;
    elapsed.start();
    m_fixture->player->stop();
    QVERIFY(elapsed.elapsed() < kPatienceMs);
}

void TestStreams::http_data()
{
    QTest::addColumn<int>("behaviour");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("outcome");
    const auto row = [](const char *title, int behaviour, const char *name, int outcome) {
        QTest::newRow(title) << behaviour << name << outcome;
    };
    row("a clip", StreamServer::Serve, "clip.mp4", VxVlcPlayerQml::Ended);
    row("a clip that is not there", StreamServer::Refuse, "clip.mp4", VxVlcPlayerQml::Error);
    row("the server dies", StreamServer::Die, "clip.mp4", VxVlcPlayerQml::Ended);
    row("the server falls silent", StreamServer::Stall, "clip.mp4", VxVlcPlayerQml::Stopped);
    row("a playlist of segments", StreamServer::Serve, "live.m3u8", VxVlcPlayerQml::Ended);
    row("a playlist whose segments are gone", StreamServer::Serve, "gone.m3u8",
        VxVlcPlayerQml::Error);
}

void TestStreams::http()
{
    QFETCH(int, behaviour);
    QFETCH(QString, name);
    QFETCH(int, outcome);
    m_fixture = std::make_unique<PlayerFixture>();
    const StreamServer server(m_files, StreamServer::Behaviour(behaviour));
    m_fixture->open(server.url(name));
    if (outcome == VxVlcPlayerQml::Error)
        return expectOneError();
    QVERIFY(m_fixture->waitForFrames(5));
    QCOMPARE(m_fixture->lastFrame().size(), QSize(320, 160));
    if (outcome == VxVlcPlayerQml::Stopped) {
        QTest::qWait(2000);
        expectStopAtOnce();
    }
    QVERIFY(m_fixture->waitForState(outcome, 20000));
    QCOMPARE(m_fixture->errors, QStringList());
    if (behaviour == StreamServer::Die) {
        // What a loop would do next ends it.
        m_fixture->forget();
        m_fixture->player->restart();
        expectOneError();
    }
}

// libvlc asks its user; there is nobody to ask, so the answer is no.
void TestStreams::selfSignedCertificate()
{
    QProcess request; // its dots stay with it
    request.start(QStringLiteral("openssl"),
                  {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=localhost",
                   "-days", "2", "-out", m_clips.path("cert.pem"), "-keyout",
                   m_clips.path("key.pem")});
    QVERIFY(request.waitForFinished() && request.exitCode() == 0);
    const QString port = QString::number(freeTcpPort());
    const Helper server(
        QStringLiteral("openssl"),
        {"s_server", "-quiet", "-accept", port, "-cert", "cert.pem", "-key", "key.pem", "-WWW"},
        m_clips.path(QString()));
    const auto listens = [&port] {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port.toUShort());
        return socket.waitForConnected(1000);
    };
    QTRY_VERIFY(listens());
    m_fixture = std::make_unique<PlayerFixture>();
    m_fixture->open(QUrl(QStringLiteral("https://localhost:%1/clip.mp4").arg(port)));
    expectOneError();
    QCOMPARE(m_fixture->frames(), 0);
}

void TestStreams::datagrams()
{
    const QString address = QStringLiteral("127.0.0.1:%1").arg(freeUdpPort());
    m_fixture = std::make_unique<PlayerFixture>();
    m_fixture->open(QUrl("udp://@" + address));
    // Nobody sends yet.
    QTest::qWait(500);
    QCOMPARE(m_fixture->frames(), 0);
    expectStopAtOnce();
    m_fixture->open(QUrl("udp://@" + address));
    {
        const Helper sender(QStringLiteral("ffmpeg"),
                            {"-loglevel", "error", "-re", "-stream_loop", "-1", "-i", "clip.ts",
                             "-c", "copy", "-f", "mpegts", "udp://" + address + "?pkt_size=1316"},
                            m_clips.path(QString()));
        QVERIFY(m_fixture->waitForFrames(10, 20000));
        QCOMPARE(m_fixture->lastFrame().size(), QSize(320, 160));
    }
    QTest::qWait(1000); // the sender is gone
    expectStopAtOnce();
    QCOMPARE(m_fixture->errors, QStringList());
}

void TestStreams::nobodyListens_data()
{
    QTest::addColumn<QString>("scheme");
    for (const char *scheme : {"http", "https", "rtsp"})
        QTest::newRow(scheme) << scheme;
}

void TestStreams::nobodyListens()
{
    QFETCH(QString, scheme);
    m_fixture = std::make_unique<PlayerFixture>();
    m_fixture->open(QUrl(QStringLiteral("%1://127.0.0.1:%2/a").arg(scheme).arg(freeTcpPort())));
    expectOneError();
}

void TestStreams::nobodyAnswers_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<QString>("action");
    for (const char *scheme : {"http", "https", "rtsp"}) {
        for (const char *action : {"stop", "next", "quit"})
            QTest::addRow("%s: %s", scheme, action)
                << QString::fromLatin1(scheme) << QString::fromLatin1(action);
    }
}

// Connected, and waiting for the first word. The plug-in that takes rtsp here, for satellite
// receivers, does not hear of the stop, but gives up by itself after 5 seconds.
void TestStreams::nobodyAnswers()
{
    QFETCH(QString, scheme);
    QFETCH(QString, action);
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    m_fixture = std::make_unique<PlayerFixture>();
    for (const bool paused : {false, true}) {
        if (!m_fixture)
            m_fixture = std::make_unique<PlayerFixture>();
        m_fixture->open(
            QUrl(QStringLiteral("%1://127.0.0.1:%2/a").arg(scheme).arg(server.serverPort())));
        QVERIFY(server.waitForNewConnection(5000));
        server.nextPendingConnection(); // stays open with the server
        QElapsedTimer elapsed;
        elapsed.start();
        if (paused)
            m_fixture->player->pause();
        if (action == QLatin1String("stop"))
            m_fixture->player->stop();
        else if (action == QLatin1String("next"))
            m_fixture->open(m_clips.url(QStringLiteral("clip.mp4")));
        else
            m_fixture.reset();
        QVERIFY2(elapsed.elapsed() < kUnnoticedMs, qPrintable(QString::number(elapsed.elapsed())));
        if (action == QLatin1String("next"))
            QVERIFY(m_fixture->waitForFrames(1));
        else if (action == QLatin1String("stop"))
            QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Stopped));
    }
    // What was left to itself ends, and nobody hears of it.
    QVERIFY(waitForLateWork(std::chrono::seconds(20)));
    if (m_fixture) {
        QTest::qWait(50);
        QCOMPARE(m_fixture->errors, QStringList());
        QCOMPARE(m_fixture->states.last() == VxVlcPlayerQml::Stopped,
                 action == QLatin1String("stop"));
    }
}

PLAYER_TEST_MAIN(TestStreams)
#include "tst_streams.moc"
