// SPDX-License-Identifier: GPL-3.0-or-later
// From a path to a picture in the real program: files, folders, playlists, the slide show, and what
// the user is told when a medium cannot be shown.

#include "tests/e2e/PlayerProcess.h"

#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <tuple>

namespace {

constexpr QRgb kRed = qRgb(200, 30, 40);
constexpr QRgb kGreen = qRgb(30, 180, 50);
constexpr QRgb kBlue = qRgb(40, 60, 190);
constexpr QRgb kInfoScreen = qRgb(0x22, 0x22, 0x22);

void writePicture(const QString &path, QRgb colour)
{
    QImage picture({64, 32}, QImage::Format_RGB32);
    picture.fill(colour);
    QVERIFY2(picture.save(path), qPrintable(path));
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

/// What a key brings, pressed again and again.
void walk(PlayerProcess &player, const QString &key, const QVector<QRgb> &colours)
{
    for (const QRgb colour : colours) {
        player.keys({key});
        QVERIFY(player.waitForColour(colour));
    }
}

QString titleOf(const QString &path)
{
    return "Tavro VR Player - " + QUrl::fromLocalFile(path).toString();
}

} // namespace

using Maker = std::function<void(const QString &path)>;
Q_DECLARE_METATYPE(Maker)

class TestMedia : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_dir.reset(new QTemporaryDir);
        // Whoever runs the program may read it.
        QVERIFY(QFile::setPermissions(m_dir->path(), QFile::Permissions(0x7755)));
    }

    void opensPathsOfAllKinds()
    {
        const QString url = "URL";
        // The folder in which the program is started, the file there, and how it is named.
        const std::tuple<QString, QString, QString> rows[] = {
            {"", "RED.PNG", "./RED.PNG"},
            {"Fotos #1 50%20 Übersee", "zwölf Äpfel #2 %41.png", url},
            {"50% ü", "#ö%31 .png", "#ö%31 .png"},
        };
        for (const auto &[folder, name, argument] : rows) {
            PlayerStart start;
            start.directory = path(folder);
            QVERIFY(QDir().mkpath(start.directory));
            const QString file = QDir(start.directory).filePath(name);
            writePicture(file, kRed);
            start.arguments =
                QStringList{argument == url ? QUrl::fromLocalFile(file).toString() : argument};
            PlayerProcess player(start);
            QVERIFY2(player.waitForColour(kRed), qPrintable(file));
            QVERIFY2(player.waitForTitle(titleOf(file)), qPrintable(player.title()));
            QCOMPARE(player.noise(), QString());
        }
    }

    void refusesAndGoesOn_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Maker>("make");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *title, const char *name, const char *message,
                            const Maker &make) {
            QTest::newRow(title) << QString(name) << make << QString(message);
        };
        const auto holding = [](const QByteArray &bytes) {
            return [bytes](const QString &p) { writeFile(p, bytes); };
        };
        const auto half = [](const QString &p) {
            QVERIFY(PanoramaReference::testPanorama({512, 256}).save(p, nullptr, 90));
            QVERIFY(QFile::resize(p, QFileInfo(p).size() / 2));
        };
        const auto nothing = [](const QString &) {};
        const char *notLoaded = "An error occurred while loading the image";
        const char *notSupported = "The file format is not supported.";
        row("a file that is not there", "none.png", notLoaded, nothing);
        row("a file that may not be read", "secret.png", notLoaded, [](const QString &p) {
            writePicture(p, kGreen);
            QVERIFY(QFile::setPermissions(p, QFile::Permissions()));
        });
        row("a text by the name of a picture", "letter.jpg", notLoaded, holding("Dear reader,\n"));
        row("a pipe that nobody writes", "pipe.jpg", notLoaded,
            [](const QString &p) { QCOMPARE(mkfifo(QFile::encodeName(p).constData(), 0644), 0); });
        row("a JPEG that ends before its picture", "head.jpg", notLoaded, [](const QString &p) {
            QVERIFY(PanoramaReference::testPanorama({512, 256}).save(p, nullptr, 90));
            QVERIFY(QFile::resize(p, 100));
        });
        row("a PNG that ends in the middle", "half.png", notLoaded, half);
        row("a PNG with damaged data", "damaged.png", notLoaded, [](const QString &p) {
            QVERIFY(PanoramaReference::testPanorama({512, 256}).save(p));
            QFile file(p);
            QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 3));
            file.write(QByteArray(64, '\x5A'));
        });
        row("an unknown format", "paper.pdf", notSupported, holding("%PDF-1.4\n"));
        row("an empty folder", "folder", "Error : Directory is empty",
            [](const QString &p) { QVERIFY(QDir().mkpath(p)); });
        row("a folder of 1000 files", "crowd",
            "Error : Cannot load more than 1000 files in a directory", [](const QString &p) {
                QVERIFY(QDir().mkpath(p));
                for (int i = 0; i < 1000; ++i)
                    writeFile(p + QString("/%1.png").arg(i), {});
            });
        row("a playlist that is not there", "none.vspl", "Error : cannot open file .vspl", nothing);
        row("a playlist that is no JSON", "text.vspl", "Error : cannot parse json",
            holding("[{\"media\":"));
        row("a playlist that is an object", "object.vspl", "Error : json is not an array",
            holding("{\"media\": \"a.png\"}"));
        row("a playlist without entries", "empty.vspl", "Error : json is empty", holding("[]"));
    }

    void refusesAndGoesOn()
    {
        QFETCH(QString, name);
        QFETCH(Maker, make);
        QFETCH(QString, message);
        make(path(name));
        PlayerStart start{
            {path(name)},
            {"general\\fileDialogLastFolder=" + QUrl::fromLocalFile(m_dir->path()).toEncoded()}};
        // The superuser may read everything.
        start.asNobody = name.startsWith("secret") && geteuid() == 0;
        PlayerProcess player(start);

        QString told;
        QVERIFY(player.waitForLog("told the user: ", &told));
        QCOMPARE(told, message);
        QVERIFY(player.dismissDialog());

        // The next file comes by the dialog, as a user would bring it: from the folder of last
        // time.
        const QString next = "next file.png";
        writePicture(path(next), kGreen);
        QVERIFY(player.openByDialog(next));
        QVERIFY(player.waitForColour(kGreen));
        QVERIFY(player.waitForTitle(titleOf(path(next))));
        player.terminate(SIGTERM);
        QCOMPARE(player.waitForEnd(), 0);
    }

    void walksThroughAPlaylist()
    {
        PlayerProcess player(PlayerStart{threeColours()});
        QVERIFY(player.waitForColour(kRed));
        walk(player, "alt+Right", {kGreen, kBlue, kRed}); // from the last on to the first
        walk(player, "alt+Left", {kBlue, kGreen});
        QVERIFY(player.waitForTitle(titleOf(path("green.jpg"))));
        player.keys({"ctrl+w"}); // stops and forgets the list
        QVERIFY(player.waitForTitle("Tavro VR Player"));
        player.keys({"alt+Right"});
        QTest::qWait(300);
        QCOMPARE(player.title(), QString("Tavro VR Player"));
        QCOMPARE(player.noise(), QString());
    }

    void showsSlides()
    {
        // A setting, the key of a loop mode, and what follows the first picture.
        const std::tuple<QByteArray, QString, QVector<QRgb>> rows[] = {
            {"general\\loopMode=0", "", {kGreen, kBlue, kInfoScreen}},
            {"general\\loopMode=2", "ctrl+r", {kGreen, kBlue, kRed}},
        };
        writeFile(path("letter.txt"), "Dear reader,\n");
        for (const auto &[setting, key, colours] : rows) {
            QStringList files = threeColours();
            if (key.isEmpty()) // nobody is there to read a message
                files.append(path("letter.txt"));
            PlayerProcess player(PlayerStart{files, {"playlist\\imageDisplayDuration=1", setting}});
            QVERIFY(player.waitForColour(kRed));
            if (!key.isEmpty())
                player.keys({key});
            for (const QRgb colour : colours)
                QVERIFY2(player.waitForColour(colour), setting.constData());
            QCOMPARE(player.noise(), QString());
        }
    }

private:
    QString path(const QString &name) const { return m_dir->filePath(name); }

    QStringList threeColours() const
    {
        writePicture(path("red.png"), kRed);
        writePicture(path("green.jpg"), kGreen);
        writePicture(path("blue.bmp"), kBlue);
        return {path("red.png"), path("green.jpg"), path("blue.bmp")};
    }

    QScopedPointer<QTemporaryDir> m_dir;
};

QTEST_MAIN(TestMedia)
#include "tst_media.moc"
