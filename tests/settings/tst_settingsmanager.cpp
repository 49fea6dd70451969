// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScratchConfig.h"
#include "settings/VxSettingsKeys.h"
#include "settings/VxSettingsManager.h"
#include "settings/VxVlcOptions.h"

Q_DECLARE_METATYPE(VxVlcOptions)

class TestSettingsManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void convertsWhatTheFileHolds();
    void gettersOfAMissingKey();
    void memoryOnlyNeverReadsTheFile();
    void rememberedDefaults();
    void coloursAndListsSurvive();
    void vlcOptionsFromTheStore();
    void vlcLists_data();
    void vlcLists();

private:
    static VxSettingsManager *open(const QString &application)
    {
        return new VxSettingsManager(QSettings::UserScope, "Tavro", application);
    }
};

void TestSettingsManager::convertsWhatTheFileHolds()
{
    ScratchConfig::write("conversions",
                         "[a]\nyes=true\nno=false\nzero=0\nnumber=42\nreal=2.5\nword=forty\n"
                         "list=x, y\ncolour=#ff0000\n");
    const QScopedPointer<VxSettingsManager> store(open("conversions"));
    QCOMPARE(store->getBool("a/yes"), true);
    QCOMPARE(store->getBool("a/no", true), false);
    QCOMPARE(store->getBool("a/zero", true), false);
    QCOMPARE(store->getInt("a/number", 7), 42);
    QCOMPARE(store->getInt("a/word"), 0);
    QCOMPARE(store->getInt("a/word", 7), 7);
    QCOMPARE(store->getDouble("a/real", 7.0), 2.5);
    QCOMPARE(store->getDouble("a/word", 7.0), 0.0);
    QCOMPARE(store->getString("a/number", "x"), QString("42"));
    QCOMPARE(store->getStringList("a/list"), QStringList({"x", "y"}));
    QVERIFY(!store->getColor("a/colour", Qt::blue).isValid());
    QCOMPARE(store->getVariant("a/word", 7), QVariant("forty"));
}

void TestSettingsManager::gettersOfAMissingKey()
{
    const QScopedPointer<VxSettingsManager> store(open("missing"));
    QCOMPARE(store->getBool("k"), false);
    QCOMPARE(store->getInt("k"), 0);
    QCOMPARE(store->getDouble("k"), 0.0);
    QCOMPARE(store->getString(VxSettingsKeys::kLanguage), QString());
    QVERIFY(store->getStringList("k").isEmpty());
    QVERIFY(!store->getColor("k").isValid());
    QVERIFY(!store->getVariant("k").isValid());

    QCOMPARE(store->getBool("k", true), true);
    QCOMPARE(store->getInt("k", -3), -3);
    QCOMPARE(store->getDouble("k", 0.5), 0.5);
    QCOMPARE(store->getString("k", "d"), QString("d"));
    QCOMPARE(store->getColor("k", Qt::blue), QColor(Qt::blue));
    // None of these defaults may have been remembered.
    QVERIFY(!store->getVariant("k").isValid());
}

void TestSettingsManager::memoryOnlyNeverReadsTheFile()
{
    QCoreApplication::setOrganizationName("Tavro");
    QCoreApplication::setApplicationName("memory");
    ScratchConfig::write("memory", "[a]\nb=true\nn=5\n");
    QCOMPARE(QSettings().value("a/n").toInt(), 5); // the file is the one that it would read

    VxSettingsManager store;
    QCOMPARE(store.getBool("a/b"), false);
    QCOMPARE(store.getInt("a/n", 9), 9);
    QCOMPARE(store.value("a/n", 8), QVariant(8));
    store.setValue("a/n", 6);
    QCOMPARE(store.getInt("a/n"), 6);
    QCOMPARE(store.value("a/n", 8), QVariant(6));
}

void TestSettingsManager::rememberedDefaults()
{
    ScratchConfig::write("defaults", "[a]\nthere=1\n");
    const QScopedPointer<VxSettingsManager> store(open("defaults"));
    QCOMPARE(store->getInt("a/new"), 0); // leaves an invalid entry, which is no default
    QCOMPARE(store->value("a/new", 5), QVariant(5));
    QCOMPARE(store->getInt("a/new"), 5);
    QCOMPARE(store->value("a/there", 5), QVariant("1"));
    QCOMPARE(store->getInt("a/there"), 1);

    store->setDefault("a/new", 6, false);
    QCOMPARE(store->getInt("a/new"), 5);
    store->setDefault("a/new", 6, true);
    QCOMPARE(store->getInt("a/new"), 6);
}

void TestSettingsManager::coloursAndListsSurvive()
{
    {
        const QScopedPointer<VxSettingsManager> store(open("survive"));
        store->setValue("a/colour", QColor(1, 2, 3, 4));
        store->setValue("a/list", QStringList({"one", "two, three"}));
        store->setValue("a/text", "comma, \"quote\" and \\ umlaut \u00e4");
    }
    const QScopedPointer<VxSettingsManager> store(open("survive"));
    QCOMPARE(store->fileName(), ScratchConfig::file("survive"));
    QCOMPARE(store->getColor("a/colour", Qt::blue), QColor(1, 2, 3, 4));
    QCOMPARE(store->getStringList("a/list"), QStringList({"one", "two, three"}));
    QCOMPARE(store->getString("a/text"), QString("comma, \"quote\" and \\ umlaut \u00e4"));
}

void TestSettingsManager::vlcOptionsFromTheStore()
{
    const QScopedPointer<VxSettingsManager> store(open("vlc"));
    VxVlcOptions written;
    written.load(store.data());
    QVERIFY(!written.hardwareDecoding && !written.disableAudio && !written.shaderColorConversion);
    written.hardwareDecoding = written.shaderColorConversion = true;
    written.customInstanceArguments = "--a,--b";
    written.customMediaOptions = ":c";
    written.custom = true;
    written.audioDelay = -250;
    written.save(store.data());

    VxVlcOptions read;
    read.load(store.data());
    QVERIFY(read.hardwareDecoding && !read.disableAudio && read.shaderColorConversion);
    QCOMPARE(read.customInstanceArguments, QString("--a,--b"));
    QCOMPARE(read.customMediaOptions, QString(":c"));
    QCOMPARE(read.audioDelay, -250);
    QVERIFY2(!read.custom, "the mode is a matter of the command line");
}

void TestSettingsManager::vlcLists_data()
{
    QTest::addColumn<VxVlcOptions>("options");
    QTest::addColumn<QString>("instanceArguments");
    QTest::addColumn<QString>("mediaOptions");
    const QString instance = "--verbose=0 --quiet --intf=dummy --ignore-config no-plugins-cache";
    const QString media =
        ":velaform-output-formats=YUYV :velaform-skip-frames=true no-plugins-cache";

    VxVlcOptions options;
    options.customInstanceArguments = ",--one,,--two=a b,";
    options.customMediaOptions = ":x";
    QTest::newRow("plain") << options << instance << media;
    options.disableAudio = true;
    options.hardwareDecoding = true;
    QTest::newRow("silent, decoded in hardware")
        << options << instance + " --noaudio" << media + " :avcodec-hw=any";
    options.custom = true;
    QTest::newRow("custom lists replace everything") << options << "--one --two=a b"
                                                     << ":x";
    options.customInstanceArguments.clear();
    options.customMediaOptions = ",";
    QTest::newRow("empty custom lists") << options << ""
                                        << "";
}

void TestSettingsManager::vlcLists()
{
    QFETCH(VxVlcOptions, options);
    QTEST(options.instanceArguments().join(" "), "instanceArguments");
    QTEST(options.mediaOptions().join(" "), "mediaOptions");
}

int main(int argc, char **argv)
{
    const ScratchConfig config;
    const QCoreApplication app(argc, argv);
    TestSettingsManager test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settingsmanager.moc"
