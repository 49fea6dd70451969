// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScratchConfig.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"
#include "settings/VxSettingsManager.h"
#include "settings/VxVlcOptions.h"

#include <QProcess>
#include <QSignalSpy>
#include <QUrl>

#include <cstdio>

using namespace VxSettingsKeys;

namespace {

const QString kApplication = "Tavro VR Player 2.3";

/// A run of another instance: `KEY=VALUE` changes a setting as its user would, `KEY` prints the
/// type and the value that it has there.
int otherInstance(const QStringList &arguments)
{
    VxSettings settings(kApplication);
    settings.load();
    VxVlcOptions vlc;
    vlc.load(settings.store());
    for (const QString &argument : arguments) {
        const QString key = argument.section('=', 0, 0);
        const QVariant value = argument.section('=', 1);
        if (key == argument)
            std::printf("%s:%s\n", settings.get(key).typeName(),
                        qUtf8Printable(settings.get(key).toString()));
        else if (settings.get(key).isValid())
            settings.set(key, value);
        else if (key == kVlcAudioDelay)
            vlc.audioDelay = value.toInt();
    }
    vlc.save(settings.store());
    settings.save();
    return 0;
}

QString runOtherInstance(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), QStringList("--other") + arguments);
    if (!process.waitForFinished() || process.exitCode() != 0)
        return "failed";
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace

class TestVxSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { QFile::remove(ScratchConfig::file(kApplication)); }

    void typesAfterReload_data();
    void typesAfterReload();
    void twinsAreThereAfterLoad();
    void instanceKeyLastsForTheRun();
    void applicationKeyTakesItsTwinAlong();
    void restartKeysTellTheirValueAtStart();
    void unknownKeysAreIgnored();
    void toggleOnlyInvertsBools();
    void resetOnlyTouchesPreferences();
    void urlsAreKeptAsText();
    void sideBySide_data();
    void sideBySide();
    void vlcOptionsSideBySide();
};

void TestVxSettings::typesAfterReload_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("inFile");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("bool") << "hmd/hmdMode" << QByteArray("true") << QVariant(true);
    QTest::newRow("bool of an old hand")
        << "general/touchMode" << QByteArray("0") << QVariant(false);
    QTest::newRow("int") << "communication/port" << QByteArray("8001") << QVariant(8001);
    QTest::newRow("double") << "volume" << QByteArray("0.25") << QVariant(0.25);
    QTest::newRow("whole double") << "general/cameraMoveSteps" << QByteArray("45")
                                  << QVariant(45.0);
    QTest::newRow("text of digits")
        << "communication/ipCustom" << QByteArray("10") << QVariant(QString("10"));
    QTest::newRow("false where text is due")
        << "communication/state" << QByteArray("false") << QVariant(false);
    QTest::newRow("no number") << "window/width" << QByteArray("wide") << QVariant(QString("wide"));
    QTest::newRow("absent") << "window/height" << QByteArray() << QVariant(600);
}

void TestVxSettings::typesAfterReload()
{
    QFETCH(QString, key);
    QFETCH(QByteArray, inFile);
    QFETCH(QVariant, expected);
    // QSettings keeps typed values as long as a process lives: only a name that this process
    // has not used yet is read from the file.
    const QString name = QString("types-%1").arg(QTest::currentDataTag());
    QString line = key;
    if (!inFile.isEmpty())
        ScratchConfig::write(name,
                             "[application]\n" + line.replace('/', '\\').toUtf8() + '=' + inFile);
    VxSettings settings(name);
    settings.load();
    for (const QString &scope : {QString("application/"), QString("instance/")}) {
        const QVariant value = settings.get(scope + key);
        QCOMPARE(value, expected);
        QCOMPARE(value.typeName(), expected.typeName());
    }
}

void TestVxSettings::twinsAreThereAfterLoad()
{
    VxSettings settings(kApplication);
    QVERIFY(!settings.get(kCameraInertia.instance).isValid());
    settings.load();
    QCOMPARE(settings.get(kCameraInertia.instance), QVariant(400));
    QCOMPARE(settings.store()->fileName(), ScratchConfig::file(kApplication));
}

void TestVxSettings::instanceKeyLastsForTheRun()
{
    {
        VxSettings settings(kApplication);
        settings.load();
        const QSignalSpy changed(&settings, &VxSettings::settingsChanged);
        settings.set(kOutputProjection.instance, 2);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(settings.get(kOutputProjection.application), QVariant(0));
        QCOMPARE(settings.get(kOutputProjection.instance), QVariant(2));
        settings.set(kCommunicationPort.application, 7000);
        settings.save();
    }
    QCOMPARE(runOtherInstance({kOutputProjection.instance, kCommunicationPort.instance}),
             QString("int:0\nint:7000"));
}

void TestVxSettings::applicationKeyTakesItsTwinAlong()
{
    VxSettings settings(kApplication);
    settings.load();
    QStringList seen;
    connect(&settings, &VxSettings::settingsChanged, this,
            [&](const QString &key) { seen << key + '=' + settings.get(key).toString(); });
    settings.set(kOutputProjection.application, 3);
    settings.set(kOutputProjection.application, 3); // no comparison with the value before
    QCOMPARE(seen.join(' '),
             QString("application/output/projection=3 instance/output/projection=3 "
                     "application/output/projection=3 instance/output/projection=3"));
}

void TestVxSettings::restartKeysTellTheirValueAtStart()
{
    runOtherInstance({kHmdSdk.application + "=openvr"});
    VxSettings settings(kApplication);
    settings.load();
    const QSignalSpy spy(&settings, &VxSettings::settingsNeedRestartChanged);
    settings.set(kHmdSdk.application, "oculus");
    settings.set(kHmdSdk.application, "openvr");
    settings.set(kHmdSdk.instance, "oculus"); // this run only: nothing to restart for
    settings.set(kVolume.application, 0.1);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy[0], QVariantList({"application/hmd/sdk", "oculus", "openvr"}));
    QCOMPARE(spy[1], QVariantList({"application/hmd/sdk", "openvr", "openvr"}));
}

void TestVxSettings::unknownKeysAreIgnored()
{
    VxSettings settings(kApplication);
    settings.load();
    const QSignalSpy changed(&settings, &VxSettings::settingsChanged);
    for (const QString &key : {QString("application/nothing"), QString("instance/language"),
                               QString("application"), QString()}) {
        settings.set(key, true);
        settings.toggle(key);
        settings.resetDefaultValue(key);
        QVERIFY(!settings.get(key).isValid());
    }
    QCOMPARE(changed.count(), 0);
}

void TestVxSettings::toggleOnlyInvertsBools()
{
    VxSettings settings(kApplication);
    settings.load();
    const QSignalSpy changed(&settings, &VxSettings::settingsChanged);
    settings.toggle(kCommunicationFormat.application); // the int 0
    settings.toggle(kHmdSdk.application);
    QCOMPARE(changed.count(), 0);
    settings.toggle(kTouchMode.instance);
    QCOMPARE(settings.get(kTouchMode.instance), QVariant(false));
    QCOMPARE(settings.get(kTouchMode.application), QVariant(true));
    settings.toggle(kTouchMode.application);
    settings.toggle(kTouchMode.application);
    QCOMPARE(settings.get(kTouchMode.instance), QVariant(true));
}

void TestVxSettings::resetOnlyTouchesPreferences()
{
    VxSettings settings(kApplication);
    settings.load();
    settings.set(kCameraInertia.application, 0);
    settings.resetDefaultValue(kCameraInertia.instance);
    QCOMPARE(settings.get(kCameraInertia.instance), QVariant(0));
    settings.resetDefaultValue(kCameraInertia.application);
    QCOMPARE(settings.get(kCameraInertia.application), QVariant(400));
    QCOMPARE(settings.get(kCameraInertia.instance), QVariant(400));
}

void TestVxSettings::urlsAreKeptAsText()
{
    VxSettings settings(kApplication);
    settings.load();
    settings.set(kPrintSavePath.application, QUrl("file:///home/a%20b/%23"));
    const QVariant kept = settings.get(kPrintSavePath.instance);
    QCOMPARE(kept.userType(), int(QMetaType::QString));
    QCOMPARE(kept.toString(), QString("file:///home/a b/%23"));
}

void TestVxSettings::sideBySide_data()
{
    QTest::addColumn<QByteArray>("fileBefore");
    QTest::addColumn<QStringList>("mine"); // changes of this instance, in order
    QTest::addColumn<QStringList>("theirs"); // changes of one that starts later and ends earlier
    QTest::addColumn<QStringList>("expected"); // what the next start reads
    const QByteArray file =
        "[application]\nvolume=0.1\nwindow\\width=800\nhmd\\sdk=auto\n"
        "general\\touchMode=true\n";
    const QString width = kWindowWidth.application;
    const QString volume = kVolume.application;
    const QString touch = kTouchMode.application;
    const QString sdk = kHmdSdk.application;

    QTest::newRow("theirs stays when this one changes nothing")
        << file << QStringList() << QStringList{width + "=900", touch + "=false", sdk + "=openvr"}
        << QStringList{width + "=900", touch + "=false", sdk + "=openvr"};
    QTest::newRow("each changes another key")
        << file << QStringList{volume + "=0.7"} << QStringList{width + "=900"}
        << QStringList{volume + "=0.7", width + "=900"};
    QTest::newRow("both change one key: who writes last")
        << file << QStringList{width + "=700"} << QStringList{width + "=900"}
        << QStringList{width + "=700"};
    QTest::newRow("a change that was taken back is none")
        << file << QStringList{width + "=700", width + "=800"} << QStringList{width + "=900"}
        << QStringList{width + "=900"};
    QTest::newRow("the very first run, for both")
        << QByteArray() << QStringList{volume + "=0.7"} << QStringList{width + "=900"}
        << QStringList{volume + "=0.7", width + "=900"};
}

void TestVxSettings::sideBySide()
{
    QFETCH(QByteArray, fileBefore);
    QFETCH(QStringList, mine);
    QFETCH(QStringList, theirs);
    QFETCH(QStringList, expected);
    for (const bool writesMeanwhile : {false, true}) {
        QFile::remove(ScratchConfig::file(kApplication));
        if (!fileBefore.isEmpty())
            ScratchConfig::write(kApplication, fileBefore);
        {
            VxSettings settings(kApplication);
            settings.store()->sync();
            settings.load();
            runOtherInstance(theirs);
            if (writesMeanwhile) {
                // From here on the store holds the other instance's values too.
                settings.store()->setValue(kVideoPlugin, "vlc");
                settings.store()->sync();
            }
            for (const QString &change : qAsConst(mine)) {
                const QString key = change.section('=', 0, 0);
                QVariant value = change.section('=', 1);
                QVERIFY(value.convert(settings.get(key).userType()));
                settings.set(key, value);
            }
            settings.save();
        }
        QStringList keys;
        QStringList values;
        for (const QString &change : qAsConst(expected)) {
            keys << change.section('=', 0, 0);
            values << change.section('=', 1);
        }
        QStringList read = runOtherInstance(keys).split('\n');
        for (QString &value : read)
            value = value.section(':', 1);
        QCOMPARE(read, values);
    }
}

void TestVxSettings::vlcOptionsSideBySide()
{
    {
        VxSettings settings(kApplication);
        settings.store()->sync();
        settings.load();
        VxVlcOptions vlc;
        vlc.load(settings.store());
        runOtherInstance({kVlcAudioDelay + "=40"});
        vlc.hardwareDecoding = true;
        vlc.save(settings.store());
        settings.save();
    }
    VxSettingsManager store(QSettings::UserScope, "Tavro", kApplication);
    QCOMPARE(store.getInt(kVlcAudioDelay), 40);
    QCOMPARE(store.getBool(kVlcHardwareDecoding), true);
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--other")
        return otherInstance(arguments.mid(2));
    const ScratchConfig config;
    TestVxSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_vxsettings.moc"
