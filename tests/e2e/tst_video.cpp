// SPDX-License-Identifier: GPL-3.0-or-later
// Clips in the real program: their picture in the panorama, their failures, their snapshots, and an
// end at every moment of playback.

#include "tests/e2e/PlayerProcess.h"
#include "tests/video/Clips.h"

#include <QTcpServer>
#include <QtTest>

#include <sys/resource.h>

#include <csignal>

namespace {

constexpr auto kH264 = " -c:v libx264 -preset ultrafast -crf 8 -pix_fmt yuv420p";

} // namespace

class TestVideo : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        QVERIFY(makeStill("sphere.mp4", sphere({512, 256}), 4));
        QVERIFY(makeStill("bars.mp4", "-f lavfi -i smptebars=s=512x256:r=25", 4));
    }

    void showsTheClip_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("loop");
        QTest::newRow("a sphere") << "sphere.mp4"
                                  << "QSG_RENDER_LOOP=basic";
        QTest::newRow("in the other loop") << "sphere.mp4"
                                           << "QSG_RENDER_LOOP=threaded";
        QVERIFY(m_clips.make("one.mp4", sphere({512, 256}) + " -frames:v 1" + kH264));
        QTest::newRow("a film of one picture") << "one.mp4"
                                               << "QSG_RENDER_LOOP=basic";
        QTest::newRow("colour bars") << "bars.mp4"
                                     << "QSG_RENDER_LOOP=basic";
    }

    void showsTheClip()
    {
        QFETCH(QString, name);
        QFETCH(QString, loop);
        PlayerProcess player(PlayerStart{{m_clips.path(name)}, {}, {loop}});
        const QString reference = name == "one.mp4" ? "sphere.mp4" : name;
        VERIFY_PICTURE(player.waitForPicture({}, decoded(reference), 4));
        QCOMPARE(player.noise(), QString());
    }

    // Healthy clips of every kind, with the machine's own configuration of ALSA, which may lack a
    // device.
    void saysNothingOfHealthyClips()
    {
        QStringList clips;
        for (const char *name :
             {"sound.mp4", "sound.mov", "sound.mkv", "sound.avi", "sound.webm"}) {
            clips << m_clips.path(name);
            const bool isWebm = clips.last().endsWith("webm");
            QVERIFY(m_clips.make(name,
                                 "-f lavfi -i color=red:s=320x160:r=25:d=1 -f lavfi -i sine=d=1"
                                     + QString(isWebm ? " -c:v libvpx -c:a libopus" : kH264)));
        }
        PlayerProcess player(PlayerStart{clips, {"volume=0"}, {"ALSA_CONFIG_PATH="}});
        for (int i = 0; i < clips.size(); ++i)
            QVERIFY(player.waitForLog("video: first picture"));
        QCOMPARE(player.noise(), QString());
    }

    // Only where the processor draws do decoders and sound stand back.
    void keepsPriorities()
    {
        for (const bool software : {true, false}) {
            const QString driver = software ? "software" : "hardware";
            PlayerProcess player(
                PlayerStart{{m_clips.path("sphere.mp4")}, {}, {"TAVRO_OPENGL=" + driver}});
            QVERIFY(player.waitForLog("video: first picture"));
            const QString window = QString::number(player.window());
            const QString threads = runTool(
                "ps", {"-L", "-o", "ni=", "-p", runTool("xdotool", {"getwindowpid", window})});
            // Beside these there is a thread of the driver's that stands back far more.
            const QString nicer = QString::number(getpriority(PRIO_PROCESS, 0) + 5);
            QCOMPARE(threads.simplified().split(' ').contains(nicer), software);
        }
    }

    // The index stands first, so what there is of the clip can be read.
    void showsTheFirstPartOfATruncatedClip()
    {
        QVERIFY(m_clips.make("whole.mp4",
                             sphere({512, 256}) + " -t 3 -g 5 -movflags +faststart" + kH264));
        const QByteArray whole = m_clips.read("whole.mp4");
        QVERIFY(m_clips.write("half.mp4", whole.left(whole.size() / 2)));
        PlayerProcess player(PlayerStart{{m_clips.path("half.mp4")}, {"general\\loopMode=0"}});
        VERIFY_PICTURE(player.waitForPicture({}, decoded("whole.mp4"), 8));
        // Its end is that of any clip: the program goes back to where it began, and complains of
        // nothing.
        QVERIFY(player.waitForTitle("Tavro VR Player"));
        QCOMPARE(player.noise(), QString());
    }

    void walksFromVideosToPictures()
    {
        const QRgb green = qRgb(30, 180, 50);
        QImage picture(64, 32, QImage::Format_RGB32);
        picture.fill(green);
        QVERIFY(picture.save(m_clips.path("green.png")));
        QVERIFY(makeStill("red.mp4", "-f lavfi -i color=red:s=320x160:r=25", 2));
        QVERIFY(makeStill("blue.mp4", "-f lavfi -i color=blue:s=640x320:r=25", 2));
        PlayerProcess player(PlayerStart{
            {m_clips.path("red.mp4"), m_clips.path("green.png"), m_clips.path("blue.mp4")},
            {"playlist\\imageDisplayDuration=1"}});
        // By themselves, in a circle.
        for (const QRgb colour : {qRgb(254, 0, 0), green, qRgb(0, 0, 254), qRgb(254, 0, 0)})
            QVERIFY(player.waitForColour(colour));
        // And by hand, in the middle of a clip.
        player.keys({"alt+Right"});
        QVERIFY(player.waitForColour(green));
        player.keys({"alt+Left"});
        QVERIFY(player.waitForColour(qRgb(254, 0, 0)));
        QCOMPARE(player.noise(), QString());
    }

    void tellsOnceWhatCannotBePlayed_data()
    {
        QTest::addColumn<QString>("medium"); // empty: one that vanishes while it plays
        QTest::addColumn<QString>("message");
        QVERIFY(m_clips.write("noise.mp4", QByteArray("no clip at all ").repeated(2000)));
        QTest::newRow("a file that vanishes") << QString() << "Unknown Error";
        QTest::newRow("a file without a medium in it")
            << m_clips.path("noise.mp4") << "Unknown Error";
        for (const char *address :
             {"http://127.0.0.1:9/a.mp4", "https://127.0.0.1:9/a.m3u8", "rtsp://127.0.0.1:9/a"}) {
            const QString url = address;
            QTest::newRow(address) << url
                                   << QString(
                                          "Unknown Error: the stream %1 does not answer, or this "
                                          "system's libvlc cannot play %2.")
                                          .arg(url, QUrl(url).scheme());
        }
    }

    // Once, however often a loop would open it; what is opened next is shown.
    void tellsOnceWhatCannotBePlayed()
    {
        QFETCH(QString, medium);
        QFETCH(QString, message);
        const bool vanishes = medium.isEmpty();
        if (vanishes) {
            medium = m_clips.path("vanishing.mp4");
            QVERIFY(makeStill("short.mp4", sphere({512, 256}), 1));
            QVERIFY(m_clips.write("vanishing.mp4", m_clips.read("short.mp4")));
        }
        PlayerProcess player(PlayerStart{{medium}, {"general\\loopMode=2"}});
        if (vanishes) {
            QVERIFY(player.waitForLog("video: first picture"));
            QVERIFY(QFile::remove(medium));
        }
        QString told;
        QVERIFY(player.waitForLog("told the user: ", &told));
        QCOMPARE(told, message);
        QVERIFY(player.dismissDialog());
        QVERIFY(player.openByDialog(m_clips.path("sphere.mp4")));
        QString opened;
        QVERIFY(player.waitForLog("video: opening", &opened));
        QVERIFY2(opened.contains("sphere.mp4"), qPrintable(opened));
        VERIFY_PICTURE(player.waitForPicture({}, decoded("sphere.mp4"), 8));
    }

    void savesTheSourcesResolution()
    {
        QVERIFY(m_clips.make("8k.mp4", sphere({7680, 3840}).replace("25", "4") + " -t 3" + kH264));
        QTemporaryDir pictures;
        PlayerProcess player(PlayerStart{{m_clips.path("8k.mp4")},
                                         {"general\\loopMode=2", "output\\projection=1",
                                          "general\\printSavePath=" + pictures.path().toUtf8()}});
        QVERIFY(player.waitForLog("first panorama frame"));
        player.keys({"ctrl+alt+p"});
        const QDir folder(pictures.path());
        QString saved;
        QTRY_VERIFY_WITH_TIMEOUT(
            !(saved = folder.entryList({"VXSNP_render_*.png"}).value(0)).isEmpty(),
            PlayerProcess::kPatienceMs);
        player.terminate(SIGTERM); // which waits for what is being written
        QCOMPARE(player.waitForEnd(), 0);

        PanoramaScene scene;
        scene.item = {2560, 1920}; // a quarter of the source's width for 90 degrees, at 4 to 3
        scene.projection = VxShaderCodeBuilder::RECTILINEAR;
        const QImage snapshot(folder.filePath(saved));
        QCOMPARE(snapshot.size(), scene.item);
        VERIFY_PICTURE(PanoramaReference::compare(
            snapshot, PanoramaReference::render(scene, decoded("8k.mp4"))));
    }

    void endsAtEveryMoment_data()
    {
        QTest::addColumn<QString>("moment");
        QTest::addColumn<QString>("way");
        for (const char *moment : {"opening", "playing", "paused", "at the end"}) {
            for (const char *way : {"window closed", "Ctrl+Q", "SIGTERM"})
                QTest::addRow("%s, %s", way, moment) << QString(moment) << QString(way);
        }
    }

    void endsAtEveryMoment()
    {
        QFETCH(QString, moment);
        QFETCH(QString, way);
        QVERIFY(makeStill("instant.mp4", sphere({512, 256}), 1.2));
        const QString clip = moment == "at the end" ? "instant.mp4" : "sphere.mp4";
        // A clip that has ended begins again at once, and so stands between its end and its
        // beginning.
        PlayerProcess player(PlayerStart{{m_clips.path(clip)}, {"general\\loopMode=2"}});
        QVERIFY(player.waitForLog("video: opening"));
        if (moment != "opening" || way == "Ctrl+Q")
            QVERIFY(player.window() != 0);
        if (moment != "opening")
            QVERIFY(player.waitForLog("video: first picture"));
        if (moment == "paused") {
            player.keys({"space"});
            QTest::qWait(200);
        } else if (moment == "at the end") {
            QVERIFY(player.waitForLog("video: opening"));
        }

        player.end(way);
        QCOMPARE(player.waitForEnd(), 0);
        QCOMPARE(player.noise(), QString());
    }

    // Whoever finds the connection broken first: the main thread or the rendering thread.
    void endsWithItsXServer()
    {
        for (int round = 0; round < 6; ++round) {
            QProcess server;
            server.start("Xvfb", {"-displayfd", "1", "-screen", "0", "800x600x24", "-noreset"});
            QVERIFY(server.waitForReadyRead(PlayerProcess::kPatienceMs));
            PlayerStart start{{m_clips.path("sphere.mp4")}};
            start.environment << QString("DISPLAY=:" + server.readLine().trimmed());
            PlayerProcess player(start);
            QVERIFY(player.waitForLog("video: first picture"));
            server.kill();
            server.waitForFinished();
            QCOMPARE(player.waitForEnd(), 1);
        }
    }

    // libvlc waits 5 seconds for its first word, which nothing interrupts.
    void endsInSpiteOfASilentServer()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QTemporaryDir config;
        PlayerStart start{{QString("rtsp://127.0.0.1:%1/a").arg(server.serverPort())}};
        start.configHome = config.path();
        PlayerProcess player(start);
        QVERIFY(server.waitForNewConnection(PlayerProcess::kPatienceMs));
        QVERIFY(player.window() != 0);
        player.keys({"ctrl+Down"});
        QElapsedTimer elapsed;
        elapsed.start();
        player.terminate(SIGTERM);
        QVERIFY(player.waitForLog("video: left a player"));
        QCOMPARE(player.waitForEnd(), 0);
        QVERIFY2(elapsed.elapsed() < 3000, qPrintable(QString::number(elapsed.elapsed())));
        QCOMPARE(player.noise(), QString());
        QFile file(PlayerProcess::settingsFile(config.path()));
        QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll().contains("volume=0.45"));
    }

private:
    QString sphere(QSize size)
    {
        const QString name = m_clips.path(QString("sphere%1.png").arg(size.width()));
        PanoramaReference::testPanorama(size).save(name);
        return "-framerate 25 -loop 1 -i " + name;
    }

    /// A clip that stands still, whose picture is `input` to ffmpeg.
    bool makeStill(const QString &name, const QString &input, double seconds)
    {
        return m_clips.make(name, QString("%1 -t %2%3").arg(input).arg(seconds).arg(kH264));
    }

    /// Its picture in ffmpeg's own colours.
    QImage decoded(const QString &name)
    {
        const QString picture = name + ".png";
        m_clips.make(picture, "-ss 0.12 -i %1/" + name + " -frames:v 1");
        return QImage(m_clips.path(picture));
    }

    Clips m_clips;
};

QTEST_MAIN(TestVideo)
#include "tst_video.moc"
