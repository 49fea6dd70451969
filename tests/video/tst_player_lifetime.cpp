// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever is done to the player at whatever moment: no wait without end, nothing left behind.

#include "settings/VxVlcOptions.h"
#include "tests/video/Clips.h"
#include "tests/video/PlayerFixture.h"
#include "tests/video/PlayerTestMain.h"

#include <QFile>
#include <QThread>

#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>

namespace {

// Far above the 40 ms that libvlc takes to end a medium, and far below a hang.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kPatienceMs = 15000;
#else
constexpr int kPatienceMs = 1500;
#endif

// The time after which the player has given free memory back.
constexpr int kRestMs = 1500;

// Without the pages of libraries, whose share depends on what else runs.
int anonymousMemoryKb()
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("Pss_Anon:"))
            return line.mid(9).trimmed().split(' ').first().toInt();
    }
    return 0;
}

} // namespace

class TestPlayerLifetime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void atEveryMoment_data();
    void atEveryMoment();
    void decoderThatWaitsForItsSurface_data();
    void decoderThatWaitsForItsSurface();
    void decoderThatDoesNotStop();
    void commandsBeforeThePlayerBegins();
    void pausedAndAtTheEnd();
    void seekStorm();
    void windowClosesDuringPlayback();
    void opensInAHiddenWindow();
    void mediumChangesFromASignal();
    void memoryOfManyOpenings();

private:
    QUrl clip();
    void perform(const QString &action, PlayerFixture &fixture);

    VxVlcOptions m_options;
    Clips m_clips;
};

void TestPlayerLifetime::initTestCase()
{
    VxVlcOptions::setInstance(&m_options);
}

QUrl TestPlayerLifetime::clip()
{
    m_clips.make(QStringLiteral("clip.mp4"),
                 QStringLiteral("-f lavfi -i testsrc=s=320x160:r=25:d=3 -f lavfi -i "
                                "sine=duration=3 -c:v libx264 -preset ultrafast -g 10 -pix_fmt "
                                "yuv420p -c:a aac -movflags +faststart"));
    return m_clips.url(QStringLiteral("clip.mp4"));
}

void TestPlayerLifetime::perform(const QString &action, PlayerFixture &fixture)
{
    VxVlcPlayerQml *player = fixture.player;
    if (action == QLatin1String("stop"))
        player->stop();
    else if (action == QLatin1String("stop and play")) {
        player->stop();
        player->play();
    } else if (action == QLatin1String("restart"))
        player->restart();
    else if (action == QLatin1String("open another"))
        player->openFile(m_clips.url(QStringLiteral("missing.mp4")));
    else if (action == QLatin1String("open again"))
        player->openFile(clip());
    else if (action == QLatin1String("pause"))
        player->pause();
    else if (action == QLatin1String("seek"))
        player->seek(1500);
    else if (action == QLatin1String("destroy"))
        fixture.makePlayer();
}

void TestPlayerLifetime::atEveryMoment_data()
{
    QTest::addColumn<QString>("action");
    for (const char *action : {"stop", "stop and play", "restart", "open another", "open again",
                               "pause", "seek", "destroy"})
        QTest::newRow(action) << QString::fromLatin1(action);
}

void TestPlayerLifetime::atEveryMoment()
{
    QFETCH(QString, action);
    PlayerFixture fixture;
    for (const bool shader : {false, true}) {
        m_options.shaderColorConversion = shader;
        for (const int delay : {0, 1, 3, 10, 20, 35, 60, 100, 170}) {
            fixture.open(clip());
            QTest::qWait(delay);
            QElapsedTimer elapsed;
            elapsed.start();
            perform(action, fixture);
            QVERIFY2(elapsed.elapsed() < kPatienceMs, qPrintable(QString::number(delay)));
        }
    }
    m_options.shaderColorConversion = false;
    // Nothing is stuck.
    fixture.open(clip());
    QVERIFY(fixture.waitForFrames(2));
}

void TestPlayerLifetime::decoderThatWaitsForItsSurface_data()
{
    atEveryMoment_data();
}

// In a window that is never shown the scene graph never makes a context to share with.
void TestPlayerLifetime::decoderThatWaitsForItsSurface()
{
    QFETCH(QString, action);
    PlayerFixture fixture(false);
    fixture.open(clip());
    QVERIFY(fixture.waitForState(VxVlcPlayerQml::Playing));
    QTest::qWait(200);
    QCOMPARE(fixture.frames(), 0);
    QElapsedTimer elapsed;
    elapsed.start();
    perform(action, fixture);
    QVERIFY(elapsed.elapsed() < kPatienceMs);
    // Once it is shown the picture comes at once, where one is still wanted.
    if (action == QLatin1String("open again")) {
        fixture.show();
        QVERIFY(fixture.waitForFrames(1, 3000));
    }
    elapsed.restart();
    delete fixture.player;
    fixture.player = nullptr;
    QVERIFY(elapsed.elapsed() < kPatienceMs);
}

// It is held up, here by a receiver of its picture, for longer than a stop waits for it. The item
// goes on with a new one.
void TestPlayerLifetime::decoderThatDoesNotStop()
{
    PlayerFixture fixture;
    for (const char *action : {"stop and play", "open again", "destroy"}) {
        std::atomic<bool> held{false};
        const auto holdUp = connect(
            fixture.player, &VxVlcPlayerQml::frameDisplayed, this,
            [&held] {
                held = true;
                QThread::msleep(500);
            },
            Qt::DirectConnection);
        fixture.open(clip());
        QTRY_VERIFY(held);
        perform(QString::fromLatin1(action), fixture);
        disconnect(holdUp);
        QCOMPARE(fixture.player->textureId(), 0);
        fixture.forget();
        if (action == QLatin1String("destroy"))
            fixture.open(clip());
        QVERIFY(fixture.waitForFrames(2));
        QCOMPARE(fixture.lastFrame().size(), QSize(320, 160));
        QCOMPARE(fixture.errors, QStringList());
        QVERIFY(!fixture.states.contains(VxVlcPlayerQml::Stopped));
    }
}

// While the held player has its memory the next one waits, and what is asked of it is not lost.
void TestPlayerLifetime::commandsBeforeThePlayerBegins()
{
    PlayerFixture fixture;
    std::atomic<bool> held{false};
    const auto holdUp = connect(
        fixture.player, &VxVlcPlayerQml::frameDisplayed, this,
        [&held] {
            held = true;
            QThread::msleep(500);
        },
        Qt::DirectConnection);
    fixture.open(clip());
    QTRY_VERIFY(held);
    fixture.open(clip());
    disconnect(holdUp);
    fixture.player->seek(1500);
    fixture.player->pause();
    QCOMPARE(fixture.positions, QVector<int>{1500});
    QVERIFY(fixture.waitForState(VxVlcPlayerQml::Paused));
    fixture.states.clear();
    fixture.positions.clear(); // of what the seek told of itself
    fixture.player->play();
    QVERIFY(fixture.waitForState(VxVlcPlayerQml::Playing));
    QVERIFY(fixture.waitForFrames(2));
    QTRY_VERIFY(!fixture.positions.isEmpty());
    QVERIFY(fixture.positions.first() >= 1400);
    QCOMPARE(fixture.errors, QStringList());
}

void TestPlayerLifetime::pausedAndAtTheEnd()
{
    PlayerFixture fixture;
    for (const char *action : {"stop", "restart", "open again", "seek", "destroy"}) {
        fixture.open(clip());
        QVERIFY(fixture.waitForFrames(1));
        fixture.player->pause();
        QVERIFY(fixture.waitForState(VxVlcPlayerQml::Paused));
        QElapsedTimer elapsed;
        elapsed.start();
        perform(QString::fromLatin1(action), fixture);
        QVERIFY(elapsed.elapsed() < kPatienceMs);

        fixture.open(clip());
        QVERIFY(fixture.waitForFrames(1));
        fixture.player->seek(2900);
        QVERIFY(fixture.waitForState(VxVlcPlayerQml::Ended));
        elapsed.restart();
        perform(QString::fromLatin1(action), fixture);
        QVERIFY(elapsed.elapsed() < kPatienceMs);
    }
}

void TestPlayerLifetime::seekStorm()
{
    PlayerFixture fixture;
    fixture.open(clip());
    QVERIFY(fixture.waitForFrames(1));
    for (int i = 0; i < 100; ++i) {
        fixture.player->seek(i * 997 % 2500);
        QTest::qWait(20);
    }
    const int frames = fixture.frames();
    fixture.player->seek(0);
    QVERIFY(fixture.waitForFrames(frames + 5));
    for (int i = 0; i < 20; ++i)
        fixture.player->seek(i * 997 % 2500);
    QElapsedTimer elapsed;
    elapsed.start();
    fixture.player->stop();
    QVERIFY(elapsed.elapsed() < kPatienceMs);
}

void TestPlayerLifetime::windowClosesDuringPlayback()
{
    for (int round = 0; round < 3; ++round) {
        std::atomic<int> frames{0};
        QQuickWindow window;
        window.resize(320, 240);
        auto *player = new VxVlcPlayerQml(window.contentItem());
        connect(
            player, &VxVlcPlayerQml::frameDisplayed, &window, [&frames] { ++frames; },
            Qt::DirectConnection);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        player->openFile(clip());
        QTRY_VERIFY(player->textureId() != 0);
        window.close();
        if (round > 0)
            QTest::qWait(200);
        if (round > 1) {
            // Hidden, it plays on, at nobody's cost, and its pictures come back with the window.
            QVERIFY(player->textureId() != 0);
            frames = 0;
            QTest::qWait(200);
            QCOMPARE(frames.load(), 0);
            player->setSeenElsewhere(true);
            QTRY_VERIFY(frames > 2);
            player->setSeenElsewhere(false);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            frames = 0;
            QTRY_VERIFY(frames > 2);
        }
    }
}

void TestPlayerLifetime::opensInAHiddenWindow()
{
    PlayerFixture fixture;
    QTRY_VERIFY(!fixture.player->textureTransfer().isEmpty()); // the window has been shown
    fixture.window.hide();
    fixture.open(clip());
    QTRY_VERIFY(!fixture.positions.isEmpty());
}

// As a playlist does it.
void TestPlayerLifetime::mediumChangesFromASignal()
{
    PlayerFixture fixture;
    int ends = 0;
    connect(fixture.player, &VxVlcPlayerQml::vlcStateChanged, this, [&](int state) {
        if (state == VxVlcPlayerQml::Ended && ++ends < 3)
            fixture.player->openFile(clip());
        else if (state == VxVlcPlayerQml::Stopped)
            fixture.player->openFile(m_clips.url(QStringLiteral("missing.mp4")));
        else if (state == VxVlcPlayerQml::Playing)
            fixture.player->seek(2500);
    });
    fixture.open(clip());
    QTRY_COMPARE_WITH_TIMEOUT(ends, 3, 15000);
    fixture.forget();
    fixture.player->stop();
    QVERIFY(fixture.waitForState(VxVlcPlayerQml::Error));
    QCOMPARE(fixture.errors.size(), 1);
}

// `TAVRO_OPENINGS` sets how many; what is left of each would add up.
void TestPlayerLifetime::memoryOfManyOpenings()
{
    const int openings = qEnvironmentVariableIsSet("TAVRO_OPENINGS")
        ? qEnvironmentVariableIntValue("TAVRO_OPENINGS")
        : 40;
    PlayerFixture fixture;
    const auto open = [&](int number) {
        m_options.shaderColorConversion = number % 2;
        fixture.open(clip());
        QVERIFY(fixture.waitForFrames(2));
        if (number % 3 == 0)
            fixture.player->stop();
    };
    // Heaps of threads hold a little more or less at each rest: the middle of three counts.
    const auto memoryAtRest = [&](int number) {
        std::array<int, 3> samples{};
        for (int &sample : samples) {
            open(number++);
            fixture.player->stop();
            QTest::qWait(kRestMs);
            sample = anonymousMemoryKb();
        }
        std::sort(samples.begin(), samples.end());
        return samples[1];
    };
    int number = 1;
    for (; number <= 8; ++number)
        open(number);
    const int early = memoryAtRest(number);
    const std::size_t usedEarly = mallinfo2().uordblks;
    for (; number <= openings - 6; ++number)
        open(number);
    const int late = memoryAtRest(number);
    const std::size_t usedLate = mallinfo2().uordblks;
    m_options.shaderColorConversion = false;
    qInfo("%d openings: %d KB after 10, %d KB at the end; in use %zu and %zu bytes", openings,
          early, late, usedEarly, usedLate);
    QVERIFY(early > 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    QVERIFY(late <= early * 1.05);
    QVERIFY(usedLate <= usedEarly * 1.01);
#endif
}

PLAYER_TEST_MAIN(TestPlayerLifetime)
#include "tst_player_lifetime.moc"
