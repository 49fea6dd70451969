// SPDX-License-Identifier: GPL-3.0-or-later
// What the player shows and says for clips of every kind, good and bad.

#include "settings/VxVlcOptions.h"
#include "tests/video/Clips.h"
#include "tests/video/PlayerFixture.h"
#include "tests/video/PlayerTestMain.h"
#include "tests/video/YuvReference.h"

#include <functional>
#include <memory>

namespace {

using States = QVector<int>;

const QString kUnknownError = QStringLiteral("Unknown Error");
constexpr auto kH264 = "libx264 -preset ultrafast -pix_fmt yuv420p";

int distance(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))});
}

// What becomes of a colour that ffmpeg has turned into BT.601: the shader takes video range for a
// signal of full range, and full range for one of video range.
QRgb throughShader(QRgb color, bool fullRange)
{
    const double r = qRed(color) / 255.0;
    const double b = qBlue(color) / 255.0;
    const double luma = 0.299 * r + 0.587 * qGreen(color) / 255.0 + 0.114 * b;
    const double chroma = (fullRange ? 255 : 224) / 255.0;
    const double y = fullRange ? luma : (16 + 219 * luma) / 255;
    const auto [red, green, blue] = yuvReference(y, 128 / 255.0 + chroma * (b - luma) / 1.772,
                                                 128 / 255.0 + chroma * (r - luma) / 1.402,
                                                 fullRange ? Range::Studio : Range::Full);
    return qRgb(blue, green, red); // put back
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
    void badFiles_data();
    void badFiles();
    void nothingToOpen();
    void audioOnly();
    void statesOfARun();
    void fewPictures();
    void beginsAgainWithoutAGap();
    void firstTwoPicturesNeverAppear();
    void sceneGraphSeesThePicture();
    void sizeChangesMidway();
    void paused_data();
    void paused();
    void seekPastTheEnd();

private:
    QUrl clip(const QString &name, const QString &arguments)
    {
        return m_clips.make(name, arguments) ? m_clips.url(name) : QUrl();
    }

    QUrl plainClip() { return quadrants(QStringLiteral("plain.mp4"), QString::fromLatin1(kH264)); }

    // 0.8 seconds of a still picture.
    QUrl quadrants(const QString &name, const QString &codec, const QSize &size = {320, 160})
    {
        return clip(name,
                    QStringLiteral("-framerate 25 -loop 1 -i %1 -t 0.8 -c:v %2")
                        .arg(m_clips.quadrants(size), codec));
    }

    static void compareQuadrants(
        const QImage &image,
        const std::function<QRgb(QRgb)> &expected = [](QRgb color) { return color; });

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
    for (int round = 0; round < 2; ++round) { // each opening is told of
        m_fixture->open(plainClip());
        QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Error));
        QCOMPARE(m_fixture->errors.size(), 1);
    }
    m_fixture->player->play();
    m_fixture->player->stop();
    m_fixture->player->seek(100);
    m_options.custom = false;
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForFrames(1));
}

void TestVlcPlayer::compareQuadrants(const QImage &image, const std::function<QRgb(QRgb)> &expected)
{
    QVERIFY(!image.isNull());
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const QRgb seen = image.pixel(image.width() * (quadrant % 2 ? 3 : 1) / 4,
                                      image.height() * (quadrant / 2 ? 3 : 1) / 4);
        const QRgb wanted = expected(Clips::kQuadrants[quadrant]);
        if (distance(seen, wanted) > 8)
            QCOMPARE(QColor(seen).name(), QColor(wanted).name());
    }
}

void TestVlcPlayer::formats_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("pixelFormat"); // other than BGRA: the shader converts
    const auto row = [](const char *title, const char *name, const QString &codec,
                        const QSize &size = {320, 160}, const char *pixelFormat = "BGRA") {
        QTest::newRow(title) << QString(name) << codec << size << QString(pixelFormat);
    };
    const QString hevc = "libx265 -x265-params log-level=none -pix_fmt ";
    const QString vp9 = "libvpx-vp9 -deadline realtime -cpu-used 8 -pix_fmt yuv420p";
    const QString mjpeg = "mjpeg -q:v 2 -pix_fmt yuvj420p";
    const QString packed = "rawvideo -pix_fmt yuyv422";
    const QSize even(320, 160);
    const QSize odd(323, 163);
    row("H.264 in mp4", "h264.mp4", kH264);
    row("H.264 10 bit in mov", "h264-10.mov", "libx264 -pix_fmt yuv420p10le");
    row("H.264 4:2:2 in ts", "h264-422.ts", "libx264 -pix_fmt yuv422p");
    row("H.264 4:4:4, odd size", "h264-odd.mp4", "libx264 -pix_fmt yuv444p", odd);
    row("H.264 variable rate in mkv", "h264-vfr.mkv",
        "libx264 -pix_fmt yuv420p -t 1.2 -vf select='not(mod(n,3))+lt(n,8)' -vsync vfr");
    row("HEVC in mp4", "hevc.mp4", hevc + "yuv420p");
    row("HEVC 10 bit in mkv", "hevc-10.mkv", hevc + "yuv420p10le");
    row("VP9 in webm, odd size", "vp9-odd.webm", vp9, odd);
    row("AV1 in mkv", "av1.mkv", "libaom-av1 -cpu-used 8 -usage realtime");
    row("MJPEG in avi", "mjpeg.avi", mjpeg);
    row("MJPEG odd 4:2:2", "mjpeg-odd.mov", "mjpeg -q:v 2 -pix_fmt yuvj422p", odd);
    row("ProRes in mov", "prores.mov", "prores_ks -profile:v 1");
    row("MPEG-4 in mp4", "mpeg4.mp4", "mpeg4 -q:v 2");
    row("raw packed in mkv", "yuyv.mkv", packed);
    row("VP9 by the shader", "vp9-odd.webm", vp9, odd, "I420");
    row("MJPEG by the shader", "mjpeg.avi", mjpeg, even, "J420");
    row("raw pairs by the shader", "nv12.mkv", "rawvideo -pix_fmt nv12", even, "NV12");
    row("raw packed by the shader", "yuyv.mkv", packed, even, "YUYV");
    row("the other packing", "uyvy.mkv", "rawvideo -pix_fmt uyvy422", even, "UYVY");
}

void TestVlcPlayer::formats()
{
    QFETCH(QString, name);
    QFETCH(QString, codec);
    QFETCH(QSize, size);
    QFETCH(QString, pixelFormat);
    const QUrl url = quadrants(name, codec, size);
    QVERIFY(!url.isEmpty());
    m_options.shaderColorConversion = pixelFormat != "BGRA";
    m_fixture->open(url);
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QVERIFY(m_fixture->frames() >= 5);
    QCOMPARE(m_fixture->errors, QStringList());
    QCOMPARE(m_fixture->lastFrame().size(), size);
    compareQuadrants(m_fixture->lastFrame(), [&](QRgb color) {
        return pixelFormat == "BGRA" ? color : throughShader(color, pixelFormat == "J420");
    });
    QCOMPARE(m_fixture->player->texturePixelFormat(), pixelFormat);
    QCOMPARE(m_fixture->player->textureTransfer(), QString("Pixel Buffer Object"));
    // This container's length is known in whole seconds only.
    if (!name.endsWith(".avi"))
        QVERIFY(m_fixture->duration > 500 && m_fixture->duration < 2000);
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
    QTest::newRow("empty") << QByteArray("") << "empty.mp4";
    for (const char *suffix : {"mp4", "mkv", "ts"})
        QTest::addRow("noise .%s", suffix) << noise << QStringLiteral("noise.%1").arg(suffix);
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

void TestVlcPlayer::audioOnly()
{
    for (const char *name : {"tone.ogg", "tone.mp4"}) {
        m_fixture->open(
            clip(QString::fromLatin1(name), QStringLiteral("-f lavfi -i sine=duration=3")));
        QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
        QCOMPARE(m_fixture->errors, QStringList());
        QVERIFY(!m_fixture->positions.isEmpty());
        QCOMPARE(m_fixture->player->textureId(), 0);
    }
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

// libvlc's own reader ends such films before their decoder hands out a picture.
void TestVlcPlayer::fewPictures()
{
    for (const int pictures : {1, 2, 3, 8}) {
        m_fixture->open(clip(QStringLiteral("few%1.mp4").arg(pictures),
                             QStringLiteral("-f lavfi -i color=red:s=320x160:r=25 -frames:v %1 "
                                            "-c:v libx264 -pix_fmt yuv420p")
                                 .arg(pictures)));
        QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
        QVERIFY(m_fixture->player->wasBrief());
        QVERIFY(m_fixture->player->textureId() != 0);
        QVERIFY(distance(m_fixture->lastFrame().pixel(10, 10), qRgb(255, 0, 0)) < 10);
        QCOMPARE(m_fixture->errors, QStringList());
    }
    m_fixture->open(clip(QStringLiteral("nine.mp4"),
                         QStringLiteral("-f lavfi -i color=red:s=320x160:r=5 -t 2 -c:v ") + kH264));
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QVERIFY(!m_fixture->player->wasBrief());
}

void TestVlcPlayer::beginsAgainWithoutAGap()
{
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    std::atomic<bool> gap{false};
    QObject listener;
    connect(
        m_fixture->player, &VxVlcPlayerQml::textureIdChanged, &listener,
        [&] { gap = gap || m_fixture->player->textureId() == 0; }, Qt::DirectConnection);
    for (int round = 0; round < 2; ++round) {
        m_fixture->forget();
        m_fixture->player->restart();
        QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
        QVERIFY(m_fixture->frames() >= 5);
        QVERIFY(!gap);
    }
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
    compareQuadrants(image);
}

void TestVlcPlayer::sizeChangesMidway()
{
    // Two streams in one file, one after the other.
    quadrants(QStringLiteral("small.ts"), QString::fromLatin1(kH264), {160, 80});
    quadrants(QStringLiteral("large.ts"), QString::fromLatin1(kH264));
    const QByteArray small = m_clips.read(QStringLiteral("small.ts"));
    const QByteArray large = m_clips.read(QStringLiteral("large.ts"));
    for (const bool up : {true, false}) {
        const QString name = up ? QStringLiteral("up.ts") : QStringLiteral("down.ts");
        QVERIFY(m_clips.write(name, up ? small + large : large + small));
        m_fixture->open(m_clips.url(name));
        QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
        QCOMPARE(m_fixture->errors, QStringList());
        QVERIFY(m_fixture->frames() >= 5);
        compareQuadrants(m_fixture->lastFrame());
    }
}

void TestVlcPlayer::paused_data()
{
    QTest::addColumn<bool>("shader");
    QTest::newRow("as BGRA") << false;
    QTest::newRow("as planes") << true;
}

// libvlc shows the same picture again and again; only another one counts, whenever it comes.
void TestVlcPlayer::paused()
{
    QFETCH(bool, shader);
    m_options.shaderColorConversion = shader;
    const QUrl url =
        clip(QStringLiteral("redblue.mp4"),
             QStringLiteral("-f lavfi -i color=red:s=320x160:r=25:d=4 -f lavfi -i "
                            "color=blue:s=320x160:r=25:d=4 -filter_complex concat -g 10 "
                            "-c:v libx264 -preset ultrafast -pix_fmt yuv420p"));
    m_fixture->open(url);
    QVERIFY(m_fixture->waitForFrames(3));
    m_fixture->player->pause();
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Paused));
    const auto becomes = [&](QRgb color) {
        return QTest::qWaitFor([&] {
            const QImage image = m_fixture->lastFrame();
            return !image.isNull() && distance(image.pixel(10, 10), color) < 90;
        });
    };
    const QRgb red = qRgb(255, 0, 0);
    const QRgb blue = qRgb(0, 0, 255);
    QTest::qWait(100);
    m_fixture->forget();
    m_fixture->player->seek(6000);
    QCOMPARE(m_fixture->positions, QVector<int>{6000});
    QVERIFY(becomes(blue));
    for (int offset = 5000; offset >= 1000; offset -= 200)
        m_fixture->player->seek(offset);
    QVERIFY(becomes(red));
    QTest::qWait(1500); // until nothing is under way
    m_fixture->forget();
    QTest::qWait(1000);
    QCOMPARE(m_fixture->frames(), 0);
    m_fixture->player->seek(6000); // while its output rests
    QVERIFY(becomes(blue));

    m_fixture->window.hide();
    m_fixture->forget();
    m_fixture->player->seek(1000);
    QTest::qWait(1000);
    QCOMPARE(m_fixture->frames(), 0);
    m_fixture->window.show();
    QVERIFY(becomes(red));

    m_fixture->window.hide();
    m_fixture->player->setSeenElsewhere(true);
    m_fixture->player->seek(6000);
    QVERIFY(becomes(blue));
    QVERIFY(m_fixture->states.isEmpty());
}

void TestVlcPlayer::seekPastTheEnd()
{
    m_fixture->open(plainClip());
    QVERIFY(m_fixture->waitForFrames(1));
    m_fixture->player->seek(100000000);
    QVERIFY(m_fixture->waitForState(VxVlcPlayerQml::Ended));
    QCOMPARE(m_fixture->errors, QStringList());
}

PLAYER_TEST_MAIN(TestVlcPlayer)
#include "tst_vlc_player.moc"
