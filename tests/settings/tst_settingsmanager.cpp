// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScratchConfig.h"
#include "settings/VxSettingsManager.h"
#include "settings/VxVlcOptions.h"

class TestSettingsManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void convertsWhatTheFileHolds()
    {
        ScratchConfig::write("conversions",
                             "[a]\nno=false\nzero=0\nnumber=42\nreal=2.5\nword=forty\n"
                             "list=x, y\ncolour=#ff0000\n");
        VxSettingsManager store(QSettings::UserScope, "Tavro", "conversions");
        QCOMPARE(store.getBool("a/no", true), false);
        QCOMPARE(store.getBool("a/zero", true), false);
        QCOMPARE(store.getInt("a/number", 7), 42);
        QCOMPARE(store.getInt("a/word", 7), 7);
        QCOMPARE(store.getDouble("a/real", 7.0), 2.5);
        QCOMPARE(store.getDouble("a/word", 7.0), 0.0);
        QCOMPARE(store.getString("a/number", "x"), QString("42"));
        QCOMPARE(store.getStringList("a/list"), QStringList({"x", "y"}));
        QVERIFY(!store.getColor("a/colour", Qt::blue).isValid());
        QCOMPARE(store.getVariant("a/word", 7), QVariant("forty"));
        // What a missing key has for its reader is not remembered.
        QCOMPARE(store.getInt("k", -3), -3);
        QCOMPARE(store.getColor("k", Qt::blue), QColor(Qt::blue));
        QVERIFY(store.getInt("k") == 0 && !store.getVariant("k").isValid());
    }

    void memoryOnlyNeverReadsTheFile()
    {
        QCoreApplication::setOrganizationName("Tavro");
        QCoreApplication::setApplicationName("memory");
        ScratchConfig::write("memory", "[a]\nn=5\n");
        QCOMPARE(QSettings().value("a/n").toInt(), 5); // the file is the one that it would read
        VxSettingsManager store;
        QCOMPARE(store.getInt("a/n"), 0);
        QCOMPARE(store.getInt("a/n", 9), 9);
        QCOMPARE(store.value("a/n", 8), QVariant(8));
        store.setValue("a/n", 6);
        QCOMPARE(store.value("a/n", 8), QVariant(6));
    }

    void rememberedDefaults()
    {
        ScratchConfig::write("defaults", "[a]\nthere=1\n");
        VxSettingsManager store(QSettings::UserScope, "Tavro", "defaults");
        QCOMPARE(store.getInt("a/new"), 0); // leaves an invalid entry, which is no default
        QCOMPARE(store.value("a/new", 5), QVariant(5));
        QCOMPARE(store.value("a/there", 5), QVariant("1"));
        QCOMPARE(store.getInt("a/there"), 1);
        store.setDefault("a/new", 6, false);
        QCOMPARE(store.getInt("a/new"), 5);
        store.setDefault("a/new", 6, true);
        QCOMPARE(store.getInt("a/new"), 6);
    }

    void vlcOptionsFromTheStore()
    {
        VxSettingsManager store;
        VxVlcOptions written;
        written.hardwareDecoding = written.shaderColorConversion = written.custom = true;
        written.customInstanceArguments = "--a,--b";
        written.customMediaOptions = ":c";
        written.audioDelay = -250;
        written.save(&store);
        VxVlcOptions read;
        read.load(&store);
        QVERIFY(read.hardwareDecoding && !read.disableAudio && read.shaderColorConversion);
        QCOMPARE(read.customInstanceArguments + read.customMediaOptions, QString("--a,--b:c"));
        QCOMPARE(read.audioDelay, -250);
        QVERIFY(!read.custom); // a matter of the command line
    }

    void vlcLists()
    {
        const QStringList instance{"--verbose=0", "--quiet", "--intf=dummy", "--ignore-config",
                                   "no-plugins-cache"};
        const QStringList media{":velaform-output-formats=YUYV", ":velaform-skip-frames=true",
                                "no-plugins-cache"};
        VxVlcOptions options;
        options.customInstanceArguments = ",--one,,--two=a b,";
        options.customMediaOptions = ",";
        QCOMPARE(options.instanceArguments(), instance);
        const QString even = ":no-avcodec-hurry-up";
        QCOMPARE(options.mediaOptions(), media + QStringList(even));
        options.disableAudio = options.hardwareDecoding = true;
        QCOMPARE(options.instanceArguments(), instance + QStringList("--noaudio"));
        QCOMPARE(options.mediaOptions(), media + QStringList({":avcodec-hw=any", even}));
        options.custom = true; // replaces everything
        QCOMPARE(options.instanceArguments(), QStringList({"--one", "--two=a b"}));
        QCOMPARE(options.mediaOptions(), QStringList());
    }

private:
    ScratchConfig m_config;
};

QTEST_GUILESS_MAIN(TestSettingsManager)
#include "tst_settingsmanager.moc"
