// SPDX-License-Identifier: GPL-3.0-or-later
// What the player shows and says for clips of every kind, good and bad.

#include "settings/VxVlcOptions.h"
#include "tests/video/Clips.h"
#include "tests/video/PlayerFixture.h"

#include <cmath>
#include <memory>

namespace {

using States = QVector<int>;

const QString kUnknownError = QStringLiteral("Unknown Error");
constexpr auto kClip = "-t 0.8 -c:v libx264 -preset ultrafast -pix_fmt yuv420p";

int distance(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

// What becomes of a colour that ffmpeg has turned into video-range BT.601 and the shader takes for
// a signal of full range, with its own arithmetic.
QRgb throughShader(QRgb color, bool fullRange)
{
    const double r = qRed(color) / 255.0;
    const double g = qGreen(color) / 255.0;
    const double b = qBlue(color) / 255.0;
    const double luma = 0.299 * r + 0.587 * g + 0.114 * b;
    double y = luma;
    double u = (b - luma) / 1.772;
    double v = (r - luma) / 1.402;
    if (fullRange) {
        u += 128.0 / 255.0;
        v += 128.0 / 255.0;
    } else {
        y = (16 + 219 * y) / 255.0;
        u = (128 + 224 * u) / 255.0;
        v = (128 + 224 * v) / 255.0;
        y = (16 + 219 * y) / 255.0;
        u = (16 + 224 * u) / 255.0;
        v = (16 + 224 * v) / 255.0;
    }
    const double luma2 = 1.1643 * (y - 0.0625);
    const auto level = [](double value) {
        return int(std::lround(std::min(std::max(value, 0.0), 1.0) * 255));
    };
    // Red and blue have been put back.
    return qRgb(level(luma2 + 2.115 * (v - 0.5)),
                level(luma2 - 0.2126 * (v - 0.5) - 0.534 * (u - 0.5)),
                level(luma2 + 1.793 * (u - 0.5)));
}

} // namespace

class TestVlcPlayer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void refusedArguments();
    void formats_data();
    void formats();
    void shaderConversion_data();
    void shaderConversion();
    void badFiles_data();
    void badFiles();
    void nothingToOpen();
    void audioOnly_data();
    void audioOnly();
    void statesOfARun();
    void firstTwoPicturesNeverAppear();
    void sceneGraphSeesThePicture();
    void sizeChangesMidway();
    void seekWhilePaused();
    void seekPastTheEnd();

private:
    QUrl clip(const QString &name, const QString &arguments)
    {
        return m_clips.make(name, arguments) ? m_clips.url(name) : QUrl();
    }

    QUrl plainClip()
    {
        return clip(QStringLiteral("plain.mp4"), quadrantInput({320, 160}) + kClip);
    }

    QString quadrantInput(const QSize &size)
    {
        return QStringLiteral("-framerate 25 -loop 1 -i ") + m_clips.quadrants(size) + u' ';
    }

    void compareQuadrants(const QImage &image, int tolerance, QRgb (*expected)(QRgb) = nullptr);

    VxVlcOptions m_options;
    Clips m_clips;
    std::unique_ptr<PlayerFixture> m_fixture;
};

void TestVlcPlayer::initTestCase()
{
    VxVlcOptions::setInstance(&m_options);
}

void TestVlcPlayer::init()
{
    m_options = VxVlcOptions();
    m_fixture.reset();
    m_fixture = std::make_unique<PlayerFixture>();
}

// First of all tests: libvlc is made once.
void TestVlcPlayer::refusedArguments()
{
    m_options.custom = true;
    m_options.customInstanceArguments = QStringLiteral("--no-such-option,");
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Error));
    QCOMPARE(m_fixture->errors.size(), 1);
    m_fixture->player->play();
    m_fixture->player->stop();
    m_fixture->player->seek(100);
    m_options.custom = false;
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForFrames(1));
}

void TestVlcPlayer::compareQuadrants(const QImage &image, int tolerance, QRgb (*expected)(QRgb))
{
    QVERIFY(!image.isNull());
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const QPoint at(image.width() * (quadrant % 2 ? 3 : 1) / 4,
                        image.height() * (quadrant / 2 ? 3 : 1) / 4);
        const QRgb color = Clips::kQuadrants[quadrant];
        const QRgb wanted = expected ? expected(color) : color;
        const QRgb seen = image.pixel(at);
        if (distance(seen, wanted) > tolerance)
            QFAIL(qPrintable(QStringLiteral("quadrant %1: %2 instead of %3")
                                 .arg(quadrant)
                                 .arg(seen, 8, 16)
                                 .arg(wanted, 8, 16)));
    }
}

void TestVlcPlayer::formats_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("arguments");

    const QSize even(320, 160);
    const auto row = [](const char *title, const char *name, const QSize &size,
                        const char *arguments) {
        QTest::newRow(title) << QString::fromLatin1(name) << size << QString::fromLatin1(arguments);
    };
    row("H.264 in mp4", "h264.mp4", even, kClip);
    row("H.264 in mov", "h264.mov", even, kClip);
    row("H.264 in mkv", "h264.mkv", even, kClip);
    row("H.264 in avi", "h264.avi", even, kClip);
    row("H.264 in ts", "h264.ts", even, kClip);
    row("H.264 10 bit", "h264-10.mp4", even, "-t 0.8 -c:v libx264 -pix_fmt yuv420p10le");
    row("H.264 4:2:2", "h264-422.mp4", even, "-t 0.8 -c:v libx264 -pix_fmt yuv422p");
    row("H.264 4:4:4", "h264-444.mp4", even, "-t 0.8 -c:v libx264 -pix_fmt yuv444p");
    row("H.264 odd size", "h264-odd.mp4", {321, 161}, "-t 0.8 -c:v libx264 -pix_fmt yuv444p");
    row("H.264 variable rate", "h264-vfr.mkv", even,
        "-t 1.2 -vf select='not(mod(n,3))+lt(n,8)' -vsync vfr -c:v libx264 -pix_fmt yuv420p");
    row("HEVC in mp4", "hevc.mp4", even,
        "-t 0.8 -c:v libx265 -x265-params log-level=none -pix_fmt yuv420p");
    row("HEVC 10 bit", "hevc-10.mkv", even,
        "-t 0.8 -c:v libx265 -x265-params log-level=none -pix_fmt yuv420p10le");
    row("VP9 in webm", "vp9.webm", even, "-t 0.8 -c:v libvpx-vp9 -deadline realtime -cpu-used 8");
    row("VP9 odd size", "vp9-odd.webm", {323, 163},
        "-t 0.8 -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -pix_fmt yuv420p");
    row("AV1 in mkv", "av1.mkv", even, "-t 0.8 -c:v libaom-av1 -cpu-used 8 -usage realtime");
    row("MJPEG in avi", "mjpeg.avi", even, "-t 0.8 -c:v mjpeg -q:v 2 -pix_fmt yuvj420p");
    row("MJPEG odd 4:2:2", "mjpeg-odd.mov", {321, 161},
        "-t 0.8 -c:v mjpeg -q:v 2 -pix_fmt yuvj422p");
    row("ProRes in mov", "prores.mov", even, "-t 0.8 -c:v prores_ks -profile:v 1");
    row("MPEG-4 in mp4", "mpeg4.mp4", even, "-t 0.8 -c:v mpeg4 -q:v 2");
    row("raw packed in mkv", "yuyv.mkv", even, "-t 0.8 -c:v rawvideo -pix_fmt yuyv422");
}

void TestVlcPlayer::formats()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QFETCH(QString, arguments);
    const QUrl url = clip(name, quadrantInput(size) + arguments);
    QVERIFY(!url.isEmpty());
    m_fixture->open(url);
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QVERIFY(m_fixture->frames() >= 5);
    QCOMPARE(m_fixture->errors, QStringList());
    QCOMPARE(m_fixture->lastFrame().size(), size);
    compareQuadrants(m_fixture->lastFrame(), 8);
    QCOMPARE(m_fixture->player->texturePixelFormat(), QStringLiteral("BGRA"));
    QCOMPARE(m_fixture->player->textureTransfer(), QStringLiteral("Pixel Buffer Object"));
    // This container's length is known in whole seconds only.
    if (!name.endsWith(QLatin1String(".avi")))
        QVERIFY(m_fixture->duration > 500 && m_fixture->duration < 2000);
}

void TestVlcPlayer::shaderConversion_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("pixelFormat");
    QTest::addColumn<bool>("fullRange");

    const QString h264 = QString::fromLatin1(kClip);
    QTest::newRow("H.264") << "h264.mp4" << QSize(320, 160) << h264 << "I420" << false;
    QTest::newRow("VP9, odd size")
        << "vp9-odd.webm" << QSize(323, 163)
        << "-t 0.8 -c:v libvpx-vp9 -deadline realtime -cpu-used 8 -pix_fmt yuv420p"
        << "I420" << false;
    QTest::newRow("MJPEG, full range")
        << "mjpeg.avi" << QSize(320, 160) << "-t 0.8 -c:v mjpeg -q:v 2 -pix_fmt yuvj420p"
        << "J420" << true;
    QTest::newRow("raw NV12") << "nv12.mkv" << QSize(320, 160)
                              << "-t 0.8 -c:v rawvideo -pix_fmt nv12"
                              << "NV12" << false;
    QTest::newRow("raw YUYV") << "yuyv.mkv" << QSize(320, 160)
                              << "-t 0.8 -c:v rawvideo -pix_fmt yuyv422"
                              << "YUYV" << false;
    QTest::newRow("raw UYVY") << "uyvy.mkv" << QSize(320, 160)
                              << "-t 0.8 -c:v rawvideo -pix_fmt uyvy422"
                              << "UYVY" << false;
}

void TestVlcPlayer::shaderConversion()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QFETCH(QString, arguments);
    QFETCH(QString, pixelFormat);
    QFETCH(bool, fullRange);
    m_options.shaderColorConversion = true;
    m_fixture->open(clip(name, quadrantInput(size) + arguments));
    QVERIFY(m_fixture->waitForFrames(5));
    QCOMPARE(m_fixture->player->texturePixelFormat(), pixelFormat);
    QCOMPARE(m_fixture->lastFrame().size(), size);
    compareQuadrants(
        m_fixture->lastFrame(), 8,
        fullRange ? [](QRgb color) { return throughShader(color, true); }
                  : [](QRgb color) { return throughShader(color, false); });
}

void TestVlcPlayer::badFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("name");
    const QByteArray noise = [] {
        QByteArray bytes(20000, 0);
        quint32 state = 7;
        for (char &byte : bytes)
            byte = char((state = state * 1664525u + 1013904223u) >> 24);
        return bytes;
    }();
    QTest::newRow("missing") << QByteArray() << "missing.mp4";
    for (const char *suffix : {"mp4", "mkv", "ts", "avi", "webm"}) {
        QTest::addRow("empty .%s", suffix)
            << QByteArray("") << QStringLiteral("empty.%1").arg(suffix);
        QTest::addRow("noise .%s", suffix) << noise << QStringLiteral("noise.%1").arg(suffix);
    }
    QTest::newRow("text") << QByteArray("just a text\n").repeated(100) << "text.mp4";
    QTest::newRow("mp4 without its index") << QByteArray("truncated") << "headless.mp4";
}

// One error with its message; no end that would start the next medium.
void TestVlcPlayer::badFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, name);
    if (content == "truncated") {
        plainClip();
        content = m_clips.read(QStringLiteral("plain.mp4"));
        content.truncate(content.size() / 2);
    }
    if (!content.isNull())
        QVERIFY(m_clips.write(name, content));
    m_fixture->open(m_clips.url(name));
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Error));
    QTest::qWait(300);
    QCOMPARE(m_fixture->errors, QStringList(kUnknownError));
    QVERIFY(!m_fixture->states.contains(VxVlcPlayerQml::Ended));
    QCOMPARE(m_fixture->states.count(VxVlcPlayerQml::Error), 1);
    QCOMPARE(m_fixture->player->textureId(), 0);
    // The next file opens.
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForFrames(1));
    QCOMPARE(m_fixture->errors, QStringList());
}

void TestVlcPlayer::nothingToOpen()
{
    m_fixture->player->restart();
    QTest::qWait(100);
    QCOMPARE(m_fixture->states, States());
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForFrames(1));
    m_fixture->player->openFile(QUrl());
    QCOMPARE(m_fixture->player->source(), plainClip());
    QVERIFY(m_fixture->player->textureId() != 0);
}

void TestVlcPlayer::audioOnly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("arguments");
    QTest::newRow("ogg") << "tone.ogg"
                         << "-f lavfi -i sine=duration=3 -c:a libvorbis";
    QTest::newRow("mp4") << "tone.mp4"
                         << "-f lavfi -i sine=duration=3 -c:a aac";
}

void TestVlcPlayer::audioOnly()
{
    QFETCH(QString, name);
    QFETCH(QString, arguments);
    m_fixture->open(clip(name, arguments));
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QCOMPARE(m_fixture->errors, QStringList());
    QVERIFY(!m_fixture->positions.isEmpty());
    QCOMPARE(m_fixture->player->textureId(), 0);
}

void TestVlcPlayer::statesOfARun()
{
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QTest::qWait(200);
    QCOMPARE(m_fixture->states,
             (States{VxVlcPlayerQml::Opening, VxVlcPlayerQml::Playing, VxVlcPlayerQml::Ended}));
    // What has ended plays again from its beginning, and so does what was stopped.
    m_fixture->forget();
    m_fixture->player->play();
    QVERIFY(m_fixture->waitForFrames(1));
    m_fixture->player->pause();
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Paused));
    m_fixture->player->play();
    QVERIFY(QTest::qWaitFor([&] { return m_fixture->states.count(VxVlcPlayerQml::Playing) == 2; }));
    m_fixture->player->stop();
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Stopped));
    QCOMPARE(m_fixture->states,
             (States{VxVlcPlayerQml::Opening, VxVlcPlayerQml::Playing, VxVlcPlayerQml::Paused,
                     VxVlcPlayerQml::Playing, VxVlcPlayerQml::Stopped}));
    QCOMPARE(m_fixture->player->textureId(), 0);
    QCOMPARE(m_fixture->player->fps(), 0);
    m_fixture->forget();
    m_fixture->player->play();
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QVERIFY(m_fixture->frames() >= 5);
}

void TestVlcPlayer::firstTwoPicturesNeverAppear()
{
    const QUrl url = clip(QStringLiteral("first.mkv"),
                          QStringLiteral("-f lavfi -i color=red:s=320x160:r=25:d=0.08 -f lavfi -i "
                                         "color=blue:s=320x160:r=25:d=1 -filter_complex concat "
                                         "-c:v mjpeg -q:v 2 -pix_fmt yuvj420p"));
    for (int round = 0; round < 2; ++round) {
        m_fixture->open(url);
        QCOMPARE(m_fixture->player->textureId(), 0);
        QVERIFY(m_fixture->waitForFrames(1));
        QVERIFY(m_fixture->player->textureId() != 0);
        QVERIFY(distance(m_fixture->firstFrame().pixel(10, 10), qRgb(0, 0, 255)) < 10);
    }
}

void TestVlcPlayer::sceneGraphSeesThePicture()
{
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForFrames(5));
    const QImage image = m_fixture->sceneGraphTexture();
    QCOMPARE(image.size(), QSize(320, 160));
    compareQuadrants(image, 8);
}

void TestVlcPlayer::sizeChangesMidway()
{
    // Two streams in one file, one after the other.
    clip(QStringLiteral("small.ts"), quadrantInput({160, 80}) + kClip);
    clip(QStringLiteral("large.ts"), quadrantInput({320, 160}) + kClip);
    for (const char *name : {"up.ts", "down.ts"}) {
        const bool up = name == QLatin1String("up.ts");
        const QByteArray small = m_clips.read(QStringLiteral("small.ts"));
        const QByteArray large = m_clips.read(QStringLiteral("large.ts"));
        QVERIFY(m_clips.write(QString::fromLatin1(name), up ? small + large : large + small));
        m_fixture->open(m_clips.url(QString::fromLatin1(name)));
        QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
        QCOMPARE(m_fixture->errors, QStringList());
        QVERIFY(m_fixture->frames() >= 5);
        compareQuadrants(m_fixture->lastFrame(), 8);
    }
}

void TestVlcPlayer::seekWhilePaused()
{
    const QUrl url =
        clip(QStringLiteral("redblue.mp4"),
             QStringLiteral("-f lavfi -i color=red:s=320x160:r=25:d=4 -f lavfi -i "
                            "color=blue:s=320x160:r=25:d=4 -filter_complex concat -g 10 "
                            "-c:v libx264 -preset ultrafast -pix_fmt yuv420p"));
    m_fixture->open(url);
    QVERIFY(m_fixture->waitForFrames(3));
    m_fixture->player->pause();
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Paused));
    QTest::qWait(100);
    m_fixture->forget();
    m_fixture->player->seek(6000);
    QCOMPARE(m_fixture->positions, QVector<int>{6000});
    QVERIFY(QTest::qWaitFor([&] {
        const QImage image = m_fixture->lastFrame();
        return !image.isNull() && distance(image.pixel(10, 10), qRgb(0, 0, 255)) < 20;
    }));
    QVERIFY(!m_fixture->states.contains(VxVlcPlayerQml::Playing));
}

void TestVlcPlayer::seekPastTheEnd()
{
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForFrames(1));
    m_fixture->player->seek(100000000);
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QCOMPARE(m_fixture->errors, QStringList());
}

QTEST_MAIN(TestVlcPlayer)
#include "tst_vlc_player.moc"
