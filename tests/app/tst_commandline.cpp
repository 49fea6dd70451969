// SPDX-License-Identifier: GPL-3.0-or-later
// The command line and the names under which the program goes.
#include "app/CommandLine.h"
#include "app/Identity.h"
#include "app/Platform.h"
#include "gl/SoftwareOpenGl.h"

#include <QProcess>
#include <QTest>

#include <tuple>

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void parses()
    {
        const std::pair<QStringList, QVariantMap> rows[] = {
            {{"/a.jpg"}, {}},
            {{"-u", "master"}, {{"udp", "master"}}},
            {{"--udp=slave"}, {{"udp", "slave"}}},
            {{"--adobeplugin"}, {{"adobeplugin", true}}},
            {{"-act"}, {{"adobeplugin", true}, {"customvlc", true}, {"touchtable", true}}},
            {{"--customvlc", "--touchtable"}, {{"customvlc", true}, {"touchtable", true}}},
        };
        for (const auto &[arguments, set] : rows) {
            const QVariantMap result =
                CommandLine::parse(QStringList("program") + arguments, "/start");
            QCOMPARE(result.value("udp"), set.value("udp", ""));
            for (const char *flag : {"adobeplugin", "customvlc", "touchtable"})
                QCOMPARE(result.value(flag), set.value(flag, false));
            QCOMPARE(result.size(), 5);
        }
        QVERIFY(CommandLine::parse({"program"}, "/start").isEmpty());
    }

    void namesFiles()
    {
        const std::pair<QStringList, QStringList> rows[] = {
            {{"-t"}, {}},
            {{"/a/b.jpg", ""}, {"/a/b.jpg"}},
            {{"b.jpg", "../c #%.jpg", "."},
             {"/start/here/b.jpg", "/start/c #%.jpg", "/start/here"}},
            {{"rtsp://h/x", "file:///a%20b.jpg"}, {"rtsp://h/x", "file:///a%20b.jpg"}},
            {{"../a/link/../c.jpg"}, {"/start/here/../a/link/../c.jpg"}},
            {{"a.jpg", "-t", "b.jpg"}, {"/start/here/a.jpg", "/start/here/b.jpg"}},
            {{"--", "-t.jpg"}, {"/start/here/-t.jpg"}},
        };
        for (const auto &[arguments, files] : rows) {
            const QStringList all = QStringList("program") + arguments;
            QCOMPARE(CommandLine::parse(all, "/start/here").value("files").toStringList(), files);
            QCOMPARE(CommandLine::firstFile(all, "/start/here"), files.value(0));
        }
    }

    void choosesTheWindowSystem()
    {
        const std::tuple<QByteArray, QByteArray, QByteArray, QByteArray> rows[] = {
            {"wayland-0", ":0", {}, "xcb"},
            {"wayland-0", ":0", "wayland", "wayland"}, // the user's choice
            {"wayland-0", {}, {}, {}},
        };
        const auto set = [](const char *name, const QByteArray &value) {
            return value.isEmpty() ? qunsetenv(name) : qputenv(name, value);
        };
        for (const auto &[wayland, x11, chosen, expected] : rows) {
            set("WAYLAND_DISPLAY", wayland);
            set("DISPLAY", x11);
            set("QT_QPA_PLATFORM", chosen);
            Platform::prepareEnvironment();
            QCOMPARE(qgetenv("QT_QPA_PLATFORM"), expected);
        }
    }

    void tellsWhoDraws()
    {
        using SoftwareOpenGl::isSoftware;
        QVERIFY(isSoftware("llvmpipe (LLVM 15.0.6, 256 bits)") && isSoftware("softpipe")
                && isSoftware("ANGLE (Google, Vulkan 1.3.0 (SwiftShader Device), SwiftShader)"));
        QVERIFY(!isSoftware("NVIDIA H200") && !isSoftware("virgl (LLVMPIPE)")
                && !isSoftware("AMD Radeon RX 6600 (radeonsi, navi23, LLVM 15.0.6, DRM 3.49)"));
    }

    void refuses()
    {
        for (const char *argument : {"--turbo", "-x", "--udp", "--touchtable=1", "--help"}) {
            QProcess process;
            process.start(QCoreApplication::applicationFilePath(), {"--parse", argument});
            QVERIFY(process.waitForFinished());
            QCOMPARE(process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(process.exitCode(), 1);
            const QByteArray said = process.readAllStandardError();
            const QString option = QString(argument).section('=', 0, 0).remove('-');
            QVERIFY2(said.contains(option.toLatin1()), said.constData());
        }
    }

    void displayVersion()
    {
        const std::pair<const char *, const char *> rows[] = {{"2.3.1.400", "2.3.1"},
                                                              {"2.3.1.302", "2.3.1 RC 2"},
                                                              {"2.3.1.299", "2.3.1 Beta 99"},
                                                              {"2.3.1.100", "2.3.1 Alpha 0"},
                                                              {"2.3.1.99", "2.3.1 Internal 99"}};
        for (const auto &[version, shown] : rows)
            QCOMPARE(Identity::displayVersion(version), QString(shown));
        // Also the name of the settings file.
        QCOMPARE(Identity::applicationName(), QString("Tavro VR Player 2.3"));
    }
};

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
