// SPDX-License-Identifier: GPL-3.0-or-later
// The command line and the names under which the program goes.
#include "app/CommandLine.h"
#include "app/Identity.h"
#include "app/Platform.h"

#include <QProcess>
#include <QTest>

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parses_data();
    void parses();
    void namesFiles_data();
    void namesFiles();
    void noArgumentsNoOptions();
    void choosesTheWindowSystem_data();
    void choosesTheWindowSystem();
    void refuses_data();
    void refuses();
    void displayVersion_data();
    void displayVersion();
    void settingsName();
};

void TestCommandLine::parses_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QVariantMap>("set"); // the rest is unset
    QTest::newRow("only a file") << QStringList{"/a.jpg"} << QVariantMap{};
    QTest::newRow("master") << QStringList{"-u", "master"} << QVariantMap{{"udp", "master"}};
    QTest::newRow("slave, long") << QStringList{"--udp=slave"} << QVariantMap{{"udp", "slave"}};
    QTest::newRow("no mode given") << QStringList{"--udp="} << QVariantMap{{"udp", ""}};
    QTest::newRow("plug-in") << QStringList{"-a"} << QVariantMap{{"adobeplugin", true}};
    QTest::newRow("plug-in, long")
        << QStringList{"--adobeplugin"} << QVariantMap{{"adobeplugin", true}};
    QTest::newRow("several at once")
        << QStringList{"-ct"} << QVariantMap{{"customvlc", true}, {"touchtable", true}};
    QTest::newRow("several, long") << QStringList{"--customvlc", "--touchtable"}
                                   << QVariantMap{{"customvlc", true}, {"touchtable", true}};
}

void TestCommandLine::parses()
{
    QFETCH(QStringList, arguments);
    QFETCH(QVariantMap, set);
    const QVariantMap result = CommandLine::parse(QStringList("program") + arguments, "/start");
    QVariantMap expected{{"udp", ""},
                         {"adobeplugin", false},
                         {"customvlc", false},
                         {"touchtable", false},
                         {"files", result.value("files")}};
    for (auto it = set.cbegin(); it != set.cend(); ++it)
        expected[it.key()] = it.value();
    QCOMPARE(result, expected);
}

void TestCommandLine::namesFiles_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("none") << QStringList{"-t"} << QStringList{};
    QTest::newRow("absolute") << QStringList{"/a/b.jpg"} << QStringList{"/a/b.jpg"};
    QTest::newRow("from where the user is")
        << QStringList{"b.jpg", "../c #%.jpg", "."}
        << QStringList{"/start/here/b.jpg", "/start/c #%.jpg", "/start/here"};
    QTest::newRow("streams and URLs") << QStringList{"rtsp://h/x", "file:///a%20b.jpg"}
                                      << QStringList{"rtsp://h/x", "file:///a%20b.jpg"};
    QTest::newRow("between options") << QStringList{"a.jpg", "-t", "b.jpg"}
                                     << QStringList{"/start/here/a.jpg", "/start/here/b.jpg"};
    QTest::newRow("behind two dashes")
        << QStringList{"--", "-t.jpg"} << QStringList{"/start/here/-t.jpg"};
}

void TestCommandLine::namesFiles()
{
    QFETCH(QStringList, arguments);
    QTEST(CommandLine::parse(QStringList("program") + arguments, "/start/here")
              .value("files")
              .toStringList(),
          "files");
    QFETCH(QStringList, files);
    QCOMPARE(CommandLine::firstFile(QStringList("program") + arguments, "/start/here"),
             files.value(0));
}

void TestCommandLine::noArgumentsNoOptions()
{
    QVERIFY(CommandLine::parse({"program"}, "/start").isEmpty());
}

void TestCommandLine::choosesTheWindowSystem_data()
{
    QTest::addColumn<QByteArray>("wayland");
    QTest::addColumn<QByteArray>("x11");
    QTest::addColumn<QByteArray>("chosen");
    QTest::addColumn<QByteArray>("result");
    QTest::newRow("both") << QByteArray("wayland-0") << QByteArray(":0") << QByteArray()
                          << QByteArray("xcb");
    QTest::newRow("both, and the user's choice") << QByteArray("wayland-0") << QByteArray(":0")
                                                 << QByteArray("wayland") << QByteArray("wayland");
    QTest::newRow("Wayland alone")
        << QByteArray("wayland-0") << QByteArray() << QByteArray() << QByteArray();
    QTest::newRow("X11 alone") << QByteArray() << QByteArray(":0") << QByteArray() << QByteArray();
}

void TestCommandLine::choosesTheWindowSystem()
{
    const QVector<const char *> names{"WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM"};
    QVector<QByteArray> before;
    for (const char *name : names)
        before.append(qgetenv(name));
    const auto set = [&](const QVector<QByteArray> &values) {
        for (int i = 0; i < names.size(); ++i)
            values[i].isEmpty() ? qunsetenv(names[i]) : qputenv(names[i], values[i]);
    };
    QFETCH(QByteArray, wayland);
    QFETCH(QByteArray, x11);
    QFETCH(QByteArray, chosen);
    set({wayland, x11, chosen});
    Platform::prepareEnvironment();
    const QByteArray result = qgetenv("QT_QPA_PLATFORM");
    set(before);
    QTEST(result, "result");
}

void TestCommandLine::refuses_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown option") << QStringList{"--turbo"};
    QTest::newRow("unknown switch") << QStringList{"-x"};
    QTest::newRow("value missing") << QStringList{"--udp"};
    QTest::newRow("value where none is taken") << QStringList{"--touchtable=1"};
    QTest::newRow("no help option") << QStringList{"--help"};
    QTest::newRow("no version option") << QStringList{"--version"};
}

void TestCommandLine::refuses()
{
    QFETCH(QStringList, arguments);
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), QStringList("--parse") + arguments);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    const QByteArray said = process.readAllStandardError();
    QVERIFY2(said.contains(arguments.first().section('=', 0, 0).remove('-').toLatin1()),
             said.constData());
}

void TestCommandLine::displayVersion_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("shown");
    QTest::newRow("release") << "2.3.1.400"
                             << "2.3.1";
    QTest::newRow("candidate") << "2.3.1.302"
                               << "2.3.1 RC 2";
    QTest::newRow("beta") << "2.3.1.299"
                          << "2.3.1 Beta 99";
    QTest::newRow("alpha") << "2.3.1.100"
                           << "2.3.1 Alpha 0";
    QTest::newRow("internal") << "2.3.1.99"
                              << "2.3.1 Internal 99";
}

void TestCommandLine::displayVersion()
{
    QFETCH(QString, version);
    QTEST(Identity::displayVersion(version), "shown");
}

void TestCommandLine::settingsName()
{
    QCOMPARE(Identity::applicationName(), QString("Tavro VR Player 2.3"));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QStringList arguments = application.arguments();
    if (arguments.value(1) == "--parse") {
        arguments.removeAt(1);
        CommandLine::parse(arguments, "/start");
        return 0;
    }
    TestCommandLine test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_commandline.moc"
