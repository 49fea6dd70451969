// SPDX-License-Identifier: GPL-3.0-or-later
// How the real program starts, ends and remembers.

#include "tests/e2e/PlayerProcess.h"

#include <QScreen>
#include <QtTest>

#include <csignal>

class TestLifetime : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QVERIFY(m_source.save(m_file)); }

    void endsCleanly_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("loop");
        for (const char *way : {"window closed", "Ctrl+Q", "SIGINT", "SIGTERM"})
            QTest::newRow(way) << way << QStringList{m_file} << "threaded";
        QTest::newRow("basic render loop") << "window closed" << QStringList{m_file} << "basic";
        QTest::newRow("settings, Ctrl+Q") << "settings" << QStringList{m_file} << "threaded";
        QTest::newRow("without a picture") << "SIGTERM" << QStringList() << "threaded";
        QTest::newRow("before the first frame") << "at once" << QStringList{m_file} << "threaded";
    }

    void endsCleanly()
    {
        QFETCH(QString, way);
        QFETCH(QStringList, arguments);
        QFETCH(QString, loop);
        PlayerProcess player(PlayerStart{arguments, {}, {"QSG_RENDER_LOOP=" + loop}});
        if (way == "at once") {
            QVERIFY(player.waitForLog("window shown"));
        } else {
            QVERIFY(player.window() != 0);
            if (!arguments.isEmpty())
                VERIFY_PICTURE(player.waitForPicture({}, m_source));
        }
        if (way == "settings") {
            player.keys({"ctrl+comma"});
            QTest::qWait(700); // for the page to load
            way = "Ctrl+Q";
        }
        player.end(way);
        QCOMPARE(player.waitForEnd(), 0);
        QCOMPARE(player.noise(), QString());
    }

    void endsInSpiteOfADeadDisk()
    {
#ifdef TAVRO_DEAD_DISK
        const QStringList environment{"LD_PRELOAD=" TAVRO_DEAD_DISK};
        const QString picture = m_dir.filePath("dead disk.jpg");
        QVERIFY(m_source.save(picture));
        PlayerProcess waiting(PlayerStart{{picture}, {}, environment});
        QVERIFY(waiting.waitForLog("opening"));
        waiting.end("Ctrl+Q");
        QCOMPARE(waiting.waitForEnd(), 0);

        // A playlist and the head of a film are read before any player hears of them.
        for (const char *name : {"dead disk.vspl", "dead disk.mp4"}) {
            const QString file = m_dir.filePath(name);
            QVERIFY(QFile(file).open(QIODevice::WriteOnly));
            PlayerProcess hung(PlayerStart{{file}, {}, environment});
            QVERIFY(hung.waitForLog("OpenGL ready"));
            QVERIFY(hung.window() != 0);
            hung.end("Ctrl+Q");
            QCOMPARE(hung.waitForEnd(), 0);
        }

        // The settings are written by the main thread: there a second signal ends the program.
        PlayerStart start{{}, {}, environment};
        start.configHome = m_dir.filePath("no room");
        PlayerProcess hung(start);
        QVERIFY(hung.window() != 0);
        hung.terminate(SIGTERM);
        QTest::qWait(500);
        QVERIFY(hung.hasWindow());
        hung.terminate(SIGTERM);
        QCOMPARE(hung.waitForEnd(), -1);
#else
        QSKIP("The C library's calls cannot be replaced in a sanitized build.");
#endif
    }

    // Killed, and by the guard of an end in which the driver hangs.
    void losesNothingByForce()
    {
        for (const bool hangs : {false, true}) {
            PlayerStart start;
#ifdef TAVRO_DEAD_DISK
            start.environment =
                QStringList{"LD_PRELOAD=" TAVRO_DEAD_DISK, "DRIVER_HANGS=" + m_file};
#endif
            const QTemporaryDir config;
            start.configHome = config.path();
            QVERIFY(QFile::remove(m_file));
            PlayerProcess player(start);
            QVERIFY(player.window() != 0);
            player.keys({"ctrl+Down"});
            QVERIFY(m_source.save(m_file));
            if (!hangs)
                QTest::qWait(2000);
            hangs ? player.end("Ctrl+Q") : player.terminate(SIGKILL);
            QCOMPARE(player.waitForEnd(), hangs ? 0 : -1);
            QFile file(PlayerProcess::settingsFile(config.path()));
            QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll().contains("volume=0.45"));
        }
    }

    // What asks for a restart comes with devices that are not here, so a debugger gives the order.
    void startsAnew()
    {
        PlayerStart start{{"sphere.png"}};
        start.directory = m_dir.path();
        PlayerProcess player(start);
        VERIFY_PICTURE(player.waitForPicture({}, m_source));
        const auto pidOf = [](const QString &window) {
            return runTool("xdotool", {"getwindowpid", window}).toInt();
        };
        const int first = pidOf(QString::number(player.window()));
        runTool(
            "gdb",
            {"-q", "-batch", "-p", QString::number(first), "-ex",
             "call (*(Application **)&_ZN16QCoreApplication4selfE)->m_globalObject->restart()"});
        QCOMPARE(player.waitForEnd(), 123456789 & 0xFF);

        QString window;
        QTRY_VERIFY_WITH_TIMEOUT(
            !(window = runTool("xdotool", {"search", "--onlyvisible", "--name", "sphere.png"}))
                 .isEmpty(),
            PlayerProcess::kPatienceMs);
        const pid_t second = pidOf(window);
        QVERIFY(second != first);
        QVERIFY(second > 0 && kill(second, SIGTERM) == 0);
        QTRY_VERIFY_WITH_TIMEOUT(kill(second, 0) != 0, PlayerProcess::kPatienceMs);
    }

    void needsShaders()
    {
        PlayerProcess player(PlayerStart{{m_file}, {}, {"TAVRO_WITHOUT_SHADERS=1"}});
        QString told;
        QVERIFY(player.waitForLog("told the user: ", &told));
        QCOMPARE(told, QString("OpenGL 2.0 minimum is required."));
        QVERIFY(player.dialog() != 0);
        QCOMPARE(player.title(), QString("Tavro VR Player")); // nothing is opened
        player.keys({"Return"});
        QCOMPARE(player.waitForEnd(), 0);
        QCOMPARE(player.noise(), QString());
    }

    void staysHiddenForAHost()
    {
        PlayerProcess player(PlayerStart{{"-a"}});
        QVERIFY(player.waitForLog("window shown"));
        QTest::qWait(500);
        QVERIFY(!player.hasWindow());
        player.terminate(SIGTERM);
        QCOMPARE(player.waitForEnd(), 0);
    }

    void keepsPreferencesAndForgetsTheRun()
    {
        const QTemporaryDir config;
        PlayerStart start{{m_file}, {"output\\projection=2", "future\\key=kept"}};
        start.configHome = config.path();
        PanoramaScene kept;
        kept.projection = VxShaderCodeBuilder::LITTLE_PLANET;
        {
            PlayerProcess player(start);
            VERIFY_PICTURE(player.waitForPicture(kept, m_source));
            player.resize({800, 500});
            player.keys({"ctrl+4"}); // for this run alone
            PanoramaScene changed;
            changed.projection = VxShaderCodeBuilder::FISHEYE;
            VERIFY_PICTURE(player.waitForPicture(changed, m_source));
            // The next window is none that fills the screen.
            const QSize screen = QGuiApplication::primaryScreen()->size();
            player.keys({"f"});
            QTRY_COMPARE(player.screenshot().size(), screen);
            QTest::qWait(500);
            player.end("Ctrl+Q");
            QCOMPARE(player.waitForEnd(), 0);
        }
        QFile file(PlayerProcess::settingsFile(config.path()));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        for (const char *line : {"window\\width=800", "window\\height=500", "future\\key=kept"})
            QVERIFY2(text.contains(line), text.constData());
        QVERIFY(!text.contains("[instance]"));

        PlayerProcess player(start);
        VERIFY_PICTURE(player.waitForPicture(kept, m_source));
        QCOMPARE(player.screenshot().size(), QSize(800, 500));
    }

private:
    QTemporaryDir m_dir;
    const QString m_file = m_dir.filePath("sphere.png");
    const QImage m_source = PanoramaReference::testPanorama({512, 256});
};

QTEST_MAIN(TestLifetime)
#include "tst_lifetime.moc"
