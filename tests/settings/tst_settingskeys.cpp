// SPDX-License-Identifier: GPL-3.0-or-later
// Keys are text: a mistyped one reads as nothing and nobody notices. This holds every key that
// the sources spell against the keys that the settings know.
#include "ScratchConfig.h"
#include "settings/VxSettings.h"

#include <QDirIterator>
#include <QRegularExpression>

namespace {

const QDir kRoot(QStringLiteral(TAVRO_SOURCE_DIR));

/// The source files of the given kinds below a folder, as paths from the root.
QStringList sources(const QString &folder, const QStringList &patterns)
{
    QStringList found;
    QDirIterator it(kRoot.filePath(folder), patterns, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        found << kRoot.relativeFilePath(it.next());
    found.sort();
    return found;
}

/// A comment may name a key. What only looks like one, as in an address, may go too.
QString withoutComments(const QByteArray &source)
{
    return QString::fromUtf8(source).remove(QRegularExpression("//[^\n]*"));
}

/// What the first group of `pattern` captures in a file, each match once.
QStringList captures(const QString &path, const QString &pattern)
{
    QFile file(kRoot.filePath(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList found;
    QRegularExpressionMatchIterator it =
        QRegularExpression(pattern).globalMatch(withoutComments(file.readAll()));
    while (it.hasNext())
        found << it.next().captured(1);
    found.removeDuplicates();
    return found;
}

const QString kKey = "[\"'`]((?:application|instance)/[^\"'`]*)[\"'`]";
const QStringList kMediaTypes{"application/json", "application/x-www-form-urlencoded"};

} // namespace

class TestSettingsKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knownToTheSettings_data();
    void knownToTheSettings();
    void spelledOnceInCpp();
};

void TestSettingsKeys::knownToTheSettings_data()
{
    QTest::addColumn<QString>("key");
    int inQml = 0;
    for (const char *folder : {"qml", "QmlLib", "VxVideo"}) {
        const QStringList files = sources(folder, {"*.qml", "*.js"});
        for (const QString &file : files) {
            const QStringList keys = captures(file, kKey);
            for (const QString &key : keys) {
                QTest::addRow("%s %s", qPrintable(file), qPrintable(key)) << key;
                ++inQml;
            }
        }
    }
    if (inQml == 0 && kRoot.exists("qml"))
        QTest::addRow("no key was found in qml/") << QString();
    const QStringList paths =
        captures("settings/VxSettingsKeys.h", "TAVRO_SETTING\\(\"([^\"]+)\"\\)");
    for (const QString &path : paths) {
        QTest::addRow("constant application/%s", qPrintable(path)) << "application/" + path;
        QTest::addRow("constant instance/%s", qPrintable(path)) << "instance/" + path;
    }
}

void TestSettingsKeys::knownToTheSettings()
{
    QFETCH(QString, key);
    VxSettings settings("keys");
    settings.load();
    QVERIFY2(settings.get(key).isValid(), "no such setting");
}

void TestSettingsKeys::spelledOnceInCpp()
{
    QStringList spelled;
    for (const char *folder :
         {"app", "render", "video", "devices", "image", "settings", "telemetry"}) {
        const QStringList files = sources(folder, {"*.h", "*.cpp"});
        for (const QString &file : files) {
            if (file == "settings/VxSettingsKeys.h")
                continue;
            const QStringList keys = captures(file, kKey);
            for (const QString &key : keys)
                if (!kMediaTypes.contains(key))
                    spelled << file + ": " + key;
        }
    }
    QVERIFY(captures("settings/VxSettingsKeys.h", kKey).contains("application/videoPlugin"));
    QVERIFY2(spelled.isEmpty(), qPrintable("use VxSettingsKeys.h for " + spelled.join(", ")));
}

int main(int argc, char **argv)
{
    const ScratchConfig config;
    const QCoreApplication app(argc, argv);
    TestSettingsKeys test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settingskeys.moc"
