// SPDX-License-Identifier: GPL-3.0-or-later
// Keys are text: a mistyped one reads as nothing and nobody notices. This holds every key that
// the sources spell against the keys that the settings know.
#include "ScratchConfig.h"
#include "settings/VxSettings.h"

#include <QDirIterator>
#include <QRegularExpression>

namespace {

const QDir kRoot(QStringLiteral(TAVRO_SOURCE_DIR));
const QString kKeysHeader = "settings/VxSettingsKeys.h";
const QString kKey = "[\"'`]((?:application|instance)/[^\"'`]*)[\"'`]";

/// What the first group of `pattern` captures in a file of the sources, outside of its comments.
/// What only looks like one, as in an address, may go too.
QStringList captures(const QString &path, const QString &pattern)
{
    QFile file(kRoot.filePath(path));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll()).remove(QRegularExpression("//[^\n]*"));
    QStringList found;
    QRegularExpressionMatchIterator it = QRegularExpression(pattern).globalMatch(text);
    while (it.hasNext())
        found << it.next().captured(1);
    return found;
}

/// The keys that the files of the given kinds below some folders spell, by file.
QMap<QString, QStringList> spelledKeys(const QStringList &folders, const QStringList &patterns)
{
    QMap<QString, QStringList> keys;
    for (const QString &folder : folders) {
        QDirIterator it(kRoot.filePath(folder), patterns, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = kRoot.relativeFilePath(it.next());
            keys.insert(path, captures(path, kKey));
        }
    }
    return keys;
}

} // namespace

class TestSettingsKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void knownToTheSettings()
    {
        VxSettings settings("keys");
        settings.load();
        const auto inQml = spelledKeys({"qml", "QmlLib", "VxVideo"}, {"*.qml", "*.js"});
        int count = 0;
        for (auto file = inQml.cbegin(); file != inQml.cend(); ++file) {
            for (const QString &key : *file) {
                QVERIFY2(settings.get(key).isValid(), qPrintable(file.key() + ": " + key));
                ++count;
            }
        }
        QVERIFY(count > 0);
        const QStringList paths = captures(kKeysHeader, "TAVRO_SETTING\\(\"([^\"]+)\"\\)");
        QVERIFY(!paths.isEmpty());
        for (const QString &path : paths) {
            for (const char *scope : {"application/", "instance/"})
                QVERIFY2(settings.get(scope + path).isValid(), qPrintable(scope + path));
        }
    }

    void spelledOnceInCpp()
    {
        auto inCpp =
            spelledKeys({"app", "render", "video", "devices", "image", "settings", "telemetry"},
                        {"*.h", "*.cpp"});
        QVERIFY(inCpp.take(kKeysHeader).contains("application/videoPlugin"));
        for (auto file = inCpp.begin(); file != inCpp.end(); ++file) {
            file->removeAll("application/json"); // media types
            file->removeAll("application/x-www-form-urlencoded");
            QVERIFY2(file->isEmpty(),
                     qPrintable("use VxSettingsKeys.h in " + file.key() + ": " + file->join(' ')));
        }
    }
};

int main(int argc, char **argv)
{
    const ScratchConfig config;
    const QCoreApplication app(argc, argv);
    TestSettingsKeys test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settingskeys.moc"
