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

/// The keys that the files of the given kinds below some folders spell, each as "FILE: KEY".
QStringList spelledKeys(const QStringList &folders, const QStringList &patterns)
{
    QStringList keys;
    for (const QString &folder : folders) {
        QDirIterator it(kRoot.filePath(folder), patterns, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = kRoot.relativeFilePath(it.next());
            for (const QString &key :
                 captures(path, "[\"'`]((?:application|instance)/[^\"'`]*)[\"'`]"))
                keys << path + ": " + key;
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
        QStringList keys = spelledKeys({"qml", "QmlLib", "VxVideo"}, {"*.qml", "*.js"});
        QVERIFY(!keys.isEmpty());
        const QStringList paths = captures(kKeysHeader, "TAVRO_SETTING\\(\"([^\"]+)\"\\)");
        QVERIFY(!paths.isEmpty());
        for (const QString &path : paths)
            keys << kKeysHeader + ": application/" + path << kKeysHeader + ": instance/" + path;
        for (const QString &key : qAsConst(keys))
            QVERIFY2(settings.get(key.section(": ", 1)).isValid(), qPrintable(key));
    }

    void spelledOnceInCpp()
    {
        const QStringList keys =
            spelledKeys({"app", "render", "video", "devices", "image", "settings", "telemetry"},
                        {"*.h", "*.cpp"});
        QVERIFY(keys.contains(kKeysHeader + ": application/videoPlugin"));
        const QRegularExpression mediaType(": application/(json|ogg|x-www-form-urlencoded)$");
        for (const QString &key : keys)
            QVERIFY2(key.startsWith(kKeysHeader) || mediaType.match(key).hasMatch(),
                     qPrintable("use VxSettingsKeys.h in " + key));
    }

private:
    ScratchConfig m_config;
};

QTEST_GUILESS_MAIN(TestSettingsKeys)
#include "tst_settingskeys.moc"
