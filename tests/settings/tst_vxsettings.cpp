// SPDX-License-Identifier: GPL-3.0-or-later
#include "ScratchConfig.h"
#include "settings/SettingsSaver.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"
#include "settings/VxSettingsManager.h"
#include "settings/VxVlcOptions.h"

#include <QLockFile>
#include <QProcess>
#include <QSignalSpy>
#include <QUrl>

#include <cstdio>
#include <memory>
#include <tuple>

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

    void init()
    {
        QFile::remove(ScratchConfig::file(kApplication));
        m_settings = std::make_unique<VxSettings>(kApplication);
        m_settings->store()->sync();
        m_settings->load();
    }

    void typesAfterReload()
    {
        const std::tuple<QString, QByteArray, QVariant> rows[] = {
            {"general/touchMode", "0", false}, // of an old hand
            {"communication/port", "8001", 8001},
            {"general/cameraMoveSteps", "45", 45.0},
            {"communication/ipCustom", "10", "10"},
            {"communication/state", "false", false}, // where text is due
            {"window/width", "wide", 1000}, // no number
            {"communication/rate", "99999999999", 20}, // nor is this
            {"playlist/imageDisplayDuration", "2.6", 3},
            {"volume", "nan", 0.5},
            {"general/yprRadUnit", "TRUE", true},
            {"general/enableAnalytics", "no", true}, // no truth
            {"window/height", "", 600}, // absent
        };
        // QSettings keeps typed values as long as a process lives: only a name that this process
        // has not used yet is read from the file.
        QByteArray file = "[application]\n";
        for (const auto &[key, inFile, expected] : rows) {
            if (!inFile.isEmpty())
                file += QString(key).replace('/', '\\').toLatin1() + '=' + inFile + '\n';
        }
        ScratchConfig::write("types", file);
        VxSettings settings("types");
        QVERIFY(!settings.get("instance/window/width").isValid());
        settings.load();
        for (const auto &[key, inFile, expected] : rows) {
            for (const char *scope : {"application/", "instance/"}) {
                QCOMPARE(settings.get(scope + key), expected);
                QCOMPARE(settings.get(scope + key).typeName(), expected.typeName());
            }
        }
        settings.save();
        QFile saved(ScratchConfig::file("types"));
        QVERIFY(saved.open(QIODevice::ReadOnly) && saved.readAll().contains("width=1000\n"));
    }

    void instanceKeyLastsForTheRun()
    {
        m_settings->set(kOutputProjection.instance, 2);
        QCOMPARE(m_settings->get(kOutputProjection.application), QVariant(0));
        QCOMPARE(m_settings->get(kOutputProjection.instance), QVariant(2));
        m_settings->set(kCommunicationPort.application, 7000);
        m_settings->save(); // and nothing after it: the process may be killed
        QCOMPARE(runOtherInstance({kOutputProjection.instance, kCommunicationPort.instance}),
                 QString("int:0\nint:7000"));
    }

    void applicationKeyTakesItsTwinAlong()
    {
        QStringList seen;
        connect(m_settings.get(), &VxSettings::settingsChanged, this,
                [&](const QString &key) { seen << key + '=' + m_settings->get(key).toString(); });
        const QStringList both{"application/output/projection=3", "instance/output/projection=3"};
        m_settings->set(kOutputProjection.application, 3);
        m_settings->set(kOutputProjection.application, 3); // no comparison with the value before
        QCOMPARE(seen, both + both);
    }

    void restartKeysTellTheirValueAtStart()
    {
        runOtherInstance({kHmdSdk.application + "=openvr"});
        m_settings->store()->sync();
        m_settings->load();
        const QSignalSpy spy(m_settings.get(), &VxSettings::settingsNeedRestartChanged);
        m_settings->set(kHmdSdk.application, "oculus");
        m_settings->set(kHmdSdk.application, "openvr");
        m_settings->set(kHmdSdk.instance, "oculus"); // this run only: nothing to restart for
        m_settings->set(kVolume.application, 0.1);
        QCOMPARE(spy.count(), 2);
        QCOMPARE(spy[0], QVariantList({"application/hmd/sdk", "oculus", "openvr"}));
        QCOMPARE(spy[1], QVariantList({"application/hmd/sdk", "openvr", "openvr"}));
    }

    void changesOfOneKind()
    {
        const QSignalSpy changed(m_settings.get(), &VxSettings::settingsChanged);
        const QString unknown = "application/nothing";
        m_settings->set(unknown, true);
        m_settings->toggle(unknown);
        m_settings->resetDefaultValue(unknown);
        QVERIFY(!m_settings->get(unknown).isValid());
        m_settings->toggle(kCommunicationFormat.application); // the int 0
        QCOMPARE(changed.count(), 0);
        m_settings->toggle(kTouchMode.instance);
        QCOMPARE(m_settings->get(kTouchMode.instance), QVariant(false));
        QCOMPARE(m_settings->get(kTouchMode.application), QVariant(true));
        // The reset is one of the preferences.
        m_settings->set(kCameraInertia.application, 0);
        m_settings->resetDefaultValue(kCameraInertia.instance);
        QCOMPARE(m_settings->get(kCameraInertia.instance), QVariant(0));
        m_settings->resetDefaultValue(kCameraInertia.application);
        QCOMPARE(m_settings->get(kCameraInertia.application), QVariant(400));
        QCOMPARE(m_settings->get(kCameraInertia.instance), QVariant(400));
        m_settings->set(kPrintSavePath.application, QUrl("file:///home/a%20b/%23")); // kept as text
        QCOMPARE(m_settings->get(kPrintSavePath.instance), QVariant("file:///home/a b/%23"));
    }

    void sideBySide_data()
    {
        QTest::addColumn<QStringList>("mine"); // changes of this instance, in order
        QTest::addColumn<QStringList>("expected"); // what the next start reads
        const QString width = kWindowWidth.application + '=';
        const QString volume = kVolume.application + '=';
        QTest::newRow("theirs stays when this one changes nothing") << QStringList{} << m_theirs;
        QTest::newRow("each changes another key")
            << QStringList{volume + "0.7"} << m_theirs + QStringList(volume + "0.7");
        QTest::newRow("in the very first run")
            << QStringList{volume + "0.7"} << m_theirs + QStringList(volume + "0.7");
        QTest::newRow("both change one key: who writes last")
            << QStringList{width + "700"} << QStringList{width + "700"};
        QTest::newRow("a change that was taken back is none")
            << QStringList{width + "700", width + "800"} << m_theirs;
    }

    void sideBySide()
    {
        QFETCH(QStringList, mine);
        QFETCH(QStringList, expected);
        for (const bool writesMeanwhile : {false, true}) {
            QFile::remove(ScratchConfig::file(kApplication));
            if (qstrcmp(QTest::currentDataTag(), "in the very first run") != 0)
                ScratchConfig::write(
                    kApplication, "[application]\nvolume=0.1\nwindow\\width=800\nhmd\\sdk=auto\n");
            m_settings = std::make_unique<VxSettings>(kApplication);
            m_settings->store()->sync();
            m_settings->load();
            runOtherInstance(m_theirs);
            if (writesMeanwhile) {
                // From here on the store holds the other instance's values too.
                m_settings->store()->setValue(kVideoPlugin, "vlc");
                m_settings->store()->sync();
            }
            for (const QString &change : qAsConst(mine)) {
                const QString key = change.section('=', 0, 0);
                QVariant value = change.section('=', 1);
                QVERIFY(value.convert(m_settings->get(key).userType()));
                m_settings->set(key, value);
            }
            m_settings->save();
            m_settings.reset();
            for (const QString &change : qAsConst(expected))
                QCOMPARE(runOtherInstance({change.section('=', 0, 0)}).section(':', 1),
                         change.section('=', 1));
        }
    }

    void vlcOptionsSideBySide()
    {
        VxVlcOptions vlc;
        vlc.load(m_settings->store());
        runOtherInstance({kVlcAudioDelay + "=40"});
        vlc.hardwareDecoding = true;
        vlc.save(m_settings->store());
        m_settings->save();
        m_settings.reset();
        VxSettingsManager store(QSettings::UserScope, "Tavro", kApplication);
        QCOMPARE(store.getInt(kVlcAudioDelay), 40);
        QCOMPARE(store.getBool(kVlcHardwareDecoding), true);
    }

    void savesByItself()
    {
        VxVlcOptions vlc;
        VxVlcOptions::setInstance(&vlc);
        const SettingsSaver saver(m_settings.get());
        {
            // A disk that does not answer looks like a file that is locked.
            QLockFile disk(m_settings->store()->fileName() + ".lock");
            QVERIFY(disk.lock());
            m_settings->set(kVolume.application, 0.25);
            QTest::qWait(1500);
            vlc.audioDelay = 30; // a field that tells nobody
            m_settings->set(kVolume.application, 0.75);
            QTest::qWait(1500); // whoever waited for the disk would not get here
            QVERIFY(!QFile::exists(m_settings->store()->fileName()));
        }
        QTRY_COMPARE(runOtherInstance({kVolume.application}), QString("double:0.75"));
        VxVlcOptions stored;
        stored.load(m_settings->store());
        QCOMPARE(stored.audioDelay, 30);
        VxVlcOptions::setInstance(nullptr);
    }

private:
    /// Changes of an instance that starts later and ends earlier.
    const QStringList m_theirs{kWindowWidth.application + "=900", kHmdSdk.application + "=openvr"};
    std::unique_ptr<VxSettings> m_settings;
};

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
