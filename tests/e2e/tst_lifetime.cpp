// SPDX-License-Identifier: GPL-3.0-or-later
// How the real program starts, ends and remembers.

#include "tests/e2e/PlayerProcess.h"

#include <QtTest>

#include <csignal>

class TestLifetime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void endsCleanly_data();
    void endsCleanly();
    void endsInSpiteOfADeadDisk();
    void secondSignalEndsAHungProgram();
    void startsAnew();
    void needsShaders();
    void refusesAnUnknownOption();
    void staysHiddenForAHost();
    void keepsPreferencesAndForgetsTheRun();
    void twoRunsSideBySide();

private:
    QTemporaryDir m_dir;
    QImage m_source;
    QString m_file;
};

void TestLifetime::initTestCase()
{
    m_source = PanoramaReference::testPanorama({512, 256});
    m_file = m_dir.filePath("sphere.png");
    QVERIFY(m_source.save(m_file));
}

void TestLifetime::endsCleanly_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<bool>("withPicture");
    QTest::addColumn<QString>("loop");
    for (const bool picture : {true, false}) {
        const QString with = picture ? "with a picture" : "without a picture";
        for (const char *way : {"window closed", "Ctrl+Q", "SIGINT", "SIGTERM"})
            QTest::newRow(qPrintable(QString("%1, %2").arg(way, with)))
                << way << picture << "QSG_RENDER_LOOP=threaded";
    }
    QTest::newRow("window closed, basic render loop")
        << "window closed" << true << "QSG_RENDER_LOOP=basic";
    QTest::newRow("before the first frame")
        << "SIGTERM at once" << true << "QSG_RENDER_LOOP=threaded";
}

void TestLifetime::endsCleanly()
{
    QFETCH(QString, way);
    QFETCH(bool, withPicture);
    QFETCH(QString, loop);
    PlayerStart start;
    if (withPicture)
        start.arguments = QStringList{m_file};
    start.environment = QStringList{loop};
    PlayerProcess player(start);
    if (way == "SIGTERM at once") {
        QVERIFY(player.waitForLog("window shown"));
    } else {
        QVERIFY(player.window() != 0);
        if (withPicture)
            VERIFY_PICTURE(player.waitForPicture({}, m_source));
    }

    if (way == "window closed")
        runTool("wmctrl", {"-i", "-c", QString::number(player.window())});
    else if (way == "Ctrl+Q")
        player.keys({"ctrl+q"});
    else
        player.terminate(way == "SIGINT" ? SIGINT : SIGTERM);
    QCOMPARE(player.waitForEnd(), 0);
    QCOMPARE(player.noise(), QString());
}

void TestLifetime::endsInSpiteOfADeadDisk()
{
#ifdef TAVRO_DEAD_DISK
    const QString file = m_dir.filePath("dead disk.jpg");
    QVERIFY(m_source.save(file));
    PlayerStart start;
    start.arguments = QStringList{file};
    start.environment = QStringList{"LD_PRELOAD=" TAVRO_DEAD_DISK};
    PlayerProcess player(start);
    QVERIFY(player.waitForLog("opening"));
    player.keys({"ctrl+q"});
    QCOMPARE(player.waitForEnd(), 0);
#else
    QSKIP("The C library's calls cannot be replaced in a sanitized build.");
#endif
}

void TestLifetime::secondSignalEndsAHungProgram()
{
#ifdef TAVRO_DEAD_DISK
    const QString file = m_dir.filePath("dead disk.vspl");
    QFile(file).open(QIODevice::WriteOnly);
    PlayerStart start;
    start.arguments = QStringList{file};
    start.environment = QStringList{"LD_PRELOAD=" TAVRO_DEAD_DISK};
    PlayerProcess player(start);
    QVERIFY(player.waitForLog("OpenGL ready"));
    QTest::qWait(500); // the playlist is being opened
    player.terminate(SIGTERM);
    QTest::qWait(500);
    QVERIFY(player.hasWindow());
    player.terminate(SIGTERM);
    QCOMPARE(player.waitForEnd(), -1);
#else
    QSKIP("The C library's calls cannot be replaced in a sanitized build.");
#endif
}

// What asks for a restart comes with devices that are not here, so a debugger gives the order.
void TestLifetime::startsAnew()
{
    PlayerStart start;
    start.directory = m_dir.path();
    start.arguments = QStringList{"sphere.png"};
    PlayerProcess player(start);
    VERIFY_PICTURE(player.waitForPicture({}, m_source));
    const QString first = runTool("xdotool", {"getwindowpid", QString::number(player.window())});
    runTool(
        "gdb",
        {"-q", "-batch", "-p", first, "-ex", "call (void)_ZN16QCoreApplication4exitEi(123456789)"});
    QCOMPARE(player.waitForEnd(), 123456789 & 0xFF);

    QString second;
    QTRY_VERIFY_WITH_TIMEOUT(
        !(second = runTool("xdotool", {"search", "--onlyvisible", "--name", "sphere.png"}))
             .isEmpty(),
        PlayerProcess::kPatienceMs);
    const pid_t pid = runTool("xdotool", {"getwindowpid", second}).toInt();
    QVERIFY(pid != first.toInt());
    QVERIFY(pid > 0 && kill(pid, SIGTERM) == 0);
    QTRY_VERIFY_WITH_TIMEOUT(kill(pid, 0) != 0, PlayerProcess::kPatienceMs);
}

void TestLifetime::needsShaders()
{
    PlayerStart start;
    start.arguments = QStringList{m_file};
    start.environment = QStringList{"TAVRO_WITHOUT_SHADERS=1"};
    PlayerProcess player(start);
    QString told;
    QVERIFY(player.waitForLog("told the user: ", &told));
    QCOMPARE(told, QString("OpenGL 2.0 minimum is required."));
    QVERIFY(player.dialog() != 0);
    QCOMPARE(player.title(), QString("Tavro VR Player")); // nothing is opened
    player.keys({"Return"});
    QCOMPARE(player.waitForEnd(), 0);
    QCOMPARE(player.noise(), QString());
}

void TestLifetime::refusesAnUnknownOption()
{
    PlayerStart start;
    start.arguments = QStringList{"--wat", m_file}; // which is not decoded meanwhile
    PlayerProcess player(start);
    QCOMPARE(player.waitForEnd(), 1);
    QVERIFY2(player.noise().contains("wat"), qPrintable(player.noise()));
}

void TestLifetime::staysHiddenForAHost()
{
    PlayerStart start;
    start.arguments = QStringList{"-a"};
    PlayerProcess player(start);
    QVERIFY(player.waitForLog("window shown"));
    QTest::qWait(500);
    QVERIFY(!player.hasWindow());
    player.terminate(SIGTERM);
    QCOMPARE(player.waitForEnd(), 0);
}

void TestLifetime::keepsPreferencesAndForgetsTheRun()
{
    PlayerStart start;
    start.arguments = QStringList{m_file};
    start.settings = {"output\\projection=2", "general\\loopMode=2"};
    QTemporaryDir config;
    start.configHome = config.path();
    {
        PlayerProcess player(start);
        PanoramaScene scene;
        scene.projection = VxShaderCodeBuilder::LITTLE_PLANET;
        VERIFY_PICTURE(player.waitForPicture(scene, m_source));
        runTool("xdotool",
                {"windowsize", "--sync", QString::number(player.window()), "800", "500"});
        player.keys({"ctrl+4"}); // for this run alone
        scene.projection = VxShaderCodeBuilder::FISHEYE;
        VERIFY_PICTURE(player.waitForPicture(scene, m_source));
        player.keys({"ctrl+q"});
        QCOMPARE(player.waitForEnd(), 0);
    }
    QFile file(PlayerProcess::settingsFile(config.path()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY2(text.contains("window\\width=800"), text.constData());
    QVERIFY(text.contains("window\\height=500"));
    QVERIFY(text.contains("general\\loopMode=2"));
    QVERIFY(!text.contains("[instance]"));

    PlayerProcess player(start);
    PanoramaScene scene;
    scene.projection = VxShaderCodeBuilder::LITTLE_PLANET;
    VERIFY_PICTURE(player.waitForPicture(scene, m_source));
    QCOMPARE(player.screenshot().size(), QSize(800, 500));
}

// Each run writes what it holds when it ends, so the last one's values stay; keys that neither
// knows are left alone.
void TestLifetime::twoRunsSideBySide()
{
    PlayerStart start;
    start.arguments = QStringList{m_file};
    start.settings = {"general\\loopMode=2", "future\\key=kept"};
    QTemporaryDir config;
    start.configHome = config.path();
    PlayerProcess first(start);
    VERIFY_PICTURE(first.waitForPicture({}, m_source));
    PlayerProcess second(start);
    VERIFY_PICTURE(second.waitForPicture({}, m_source));
    runTool("xdotool", {"windowsize", "--sync", QString::number(second.window()), "700", "490"});
    QTRY_COMPARE(second.screenshot().size(), QSize(700, 490));
    for (PlayerProcess *player : {&first, &second}) {
        player->terminate(SIGTERM);
        QCOMPARE(player->waitForEnd(), 0);
    }
    QFile file(PlayerProcess::settingsFile(config.path()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    for (const char *line : {"window\\width=700", "general\\loopMode=2", "future\\key=kept"})
        QVERIFY2(text.contains(line), line);
}

QTEST_MAIN(TestLifetime)
#include "tst_lifetime.moc"
