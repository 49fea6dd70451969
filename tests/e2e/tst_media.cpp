// SPDX-License-Identifier: GPL-3.0-or-later
// From a path to a picture in the real program: files, folders, playlists, the slide show, and what
// the user is told when a medium cannot be shown.

#include "tests/e2e/PlayerProcess.h"

#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QWindow>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace {

constexpr QRgb kRed = qRgb(200, 30, 40);
constexpr QRgb kGreen = qRgb(30, 180, 50);
constexpr QRgb kBlue = qRgb(40, 60, 190);
constexpr QRgb kInfoScreen = qRgb(0x22, 0x22, 0x22);

void writePicture(const QString &path, QRgb colour, QSize size = {64, 32})
{
    QImage picture(size, QImage::Format_RGB32);
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

/// A window from which files are dragged, as from a file manager.
class FileWindow : public QWindow
{
public:
    explicit FileWindow(const QList<QUrl> &urls)
        : m_urls(urls)
    {
        setFlags(Qt::Window | Qt::BypassWindowManagerHint);
        setGeometry(0, 0, 80, 80);
        show();
    }

protected:
    void mousePressEvent(QMouseEvent *) override
    {
        auto *drag = new QDrag(this);
        auto *content = new QMimeData;
        content->setUrls(m_urls);
        drag->setMimeData(content);
        drag->exec(Qt::CopyAction);
    }

private:
    QList<QUrl> m_urls;
};

} // namespace

using Maker = std::function<void(const QString &path)>;
Q_DECLARE_METATYPE(Maker)

class TestMedia : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void opensPathsOfAllKinds_data();
    void opensPathsOfAllKinds();
    void takesWhatIsDropped_data();
    void takesWhatIsDropped();
    void refusesAndGoesOn_data();
    void refusesAndGoesOn();
    void walksThroughAPlaylist();
    void opensAFolderNewestFirst();
    void readsAPlaylistFile();
    void showsSlides_data();
    void showsSlides();

private:
    QString path(const QString &name) const { return m_dir->filePath(name); }

    QStringList threeColours() const;

    QScopedPointer<QTemporaryDir> m_dir;
};

void TestMedia::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(QFile::setPermissions(m_dir->path(), QFile::Permissions(0x7755)));
}

QStringList TestMedia::threeColours() const
{
    writePicture(path("red.png"), kRed);
    writePicture(path("green.jpg"), kGreen);
    writePicture(path("blue.bmp"), kBlue);
    return {path("red.png"), path("green.jpg"), path("blue.bmp")};
}

void TestMedia::opensPathsOfAllKinds_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("argument"); // counts from the folder; empty: the absolute path
    const auto row = [](const char *title, const char *folder, const char *name,
                        const char *argument = "") {
        QTest::newRow(title) << QString(folder) << QString(name) << QString(argument);
    };
    row("absolute", "", "red.png");
    row("relative to where the program was started", "trip", "red.png", "red.png");
    row("relative upwards", "trip", "red.png", "../trip/./red.png");
    row("a URL", "", "red.png", "URL");
    row("blanks, number sign, percent, umlauts", "Fotos #1 50%20 Übersee",
        "zwölf Äpfel #2 %41.png");
    row("the same, relative", "50% ü", "#ö%31 .png", "#ö%31 .png");
    row("an upper-case suffix", "", "RED.PNG");
}

void TestMedia::opensPathsOfAllKinds()
{
    QFETCH(QString, folder);
    QFETCH(QString, name);
    QFETCH(QString, argument);
    PlayerStart start;
    start.directory = path(folder);
    QVERIFY(QDir().mkpath(start.directory));
    const QString file = QDir(start.directory).filePath(name);
    writePicture(file, kRed);
    if (argument.isEmpty())
        argument = file;
    else if (argument == "URL")
        argument = QUrl::fromLocalFile(file).toString();
    start.arguments = QStringList{argument};
    PlayerProcess player(start);
    QVERIFY(player.waitForColour(kRed));
    QVERIFY2(player.waitForTitle(titleOf(file)), qPrintable(player.title()));
    QCOMPARE(player.noise(), QString());
}

void TestMedia::takesWhatIsDropped_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QVector<QRgb>>("colours"); // one after the other
    QTest::newRow("a picture") << QStringList{"red.png"} << QVector<QRgb>{kRed};
    QTest::newRow("two pictures") << QStringList{"green.jpg", "blue.bmp"}
                                  << QVector<QRgb>{kGreen, kBlue};
}

void TestMedia::takesWhatIsDropped()
{
    QFETCH(QStringList, names);
    QFETCH(QVector<QRgb>, colours);
    threeColours();
    QList<QUrl> urls;
    for (const QString &name : names)
        urls.append(QUrl::fromLocalFile(path(name)));
    FileWindow files(urls);
    PlayerProcess player({});
    QVERIFY(player.waitForColour(kInfoScreen));
    runTool("xdotool", {"windowmove", "--sync", QString::number(player.window()), "300", "200"});
    QProcess hand; // beside this process, which drags meanwhile
    hand.start("xdotool",
               QString("mousemove 40 40 sleep 0.3 mousedown 1 sleep 0.3 mousemove 70 70"
                       " sleep 0.2 mousemove 500 400 sleep 0.3 mousemove 520 420"
                       " sleep 0.5 mouseup 1")
                   .split(' '));
    QVERIFY(player.waitForColour(colours.first()));
    for (int i = 1; i < colours.size(); ++i) {
        runTool("xdotool", {"windowactivate", "--sync", QString::number(player.window())});
        player.keys({"alt+Right"});
        QVERIFY(player.waitForColour(colours[i]));
    }
    QTRY_COMPARE(hand.state(), QProcess::NotRunning);
    QCOMPARE(player.noise(), QString());
}

void TestMedia::refusesAndGoesOn_data()
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
    row("an empty file", "empty.jpg", notLoaded, holding({}));
    row("a pipe that nobody writes", "pipe.jpg", notLoaded,
        [](const QString &p) { QCOMPARE(mkfifo(QFile::encodeName(p).constData(), 0644), 0); });
    row("a JPEG that ends in the middle", "half.jpg", notLoaded, half);
    row("a PNG that ends in the middle", "half.png", notLoaded, half);
    row("a PNG with damaged data", "damaged.png", notLoaded, [](const QString &p) {
        QVERIFY(PanoramaReference::testPanorama({512, 256}).save(p));
        QFile file(p);
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 3));
        file.write(QByteArray(64, '\x5A'));
    });
    row("an unknown format", "paper.pdf", notSupported, holding("%PDF-1.4\n"));
    row("no suffix", "picture", notSupported, holding("x"));
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

void TestMedia::refusesAndGoesOn()
{
    QFETCH(QString, name);
    QFETCH(Maker, make);
    QFETCH(QString, message);
    make(path(name));
    PlayerStart start;
    start.arguments = QStringList{path(name)};
    // The superuser may read everything.
    start.asNobody = name.startsWith("secret") && geteuid() == 0;
    PlayerProcess player(start);

    QString told;
    QVERIFY(player.waitForLog("told the user: ", &told));
    QCOMPARE(told, message);
    QVERIFY(player.dialog() != 0);
    player.keys({"Return"});

    // The next file comes by the dialog, as a user would bring it.
    const QString next = path("next file.png");
    writePicture(next, kGreen);
    QTRY_COMPARE_WITH_TIMEOUT(runTool("xdotool", {"getactivewindow"}).toULongLong(),
                              qulonglong(player.window()), PlayerProcess::kPatienceMs);
    QVERIFY(player.openByDialog(next));
    QVERIFY(player.waitForColour(kGreen));
    QVERIFY(player.waitForTitle(titleOf(next)));
    player.terminate(SIGTERM);
    QCOMPARE(player.waitForEnd(), 0);
}

void TestMedia::walksThroughAPlaylist()
{
    PlayerStart start;
    start.arguments = threeColours();
    PlayerProcess player(start);
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

void TestMedia::opensAFolderNewestFirst()
{
    const QStringList files = threeColours(); // written in this order
    const QDateTime now = QDateTime::currentDateTime();
    for (int i = 0; i < files.size(); ++i) {
        QFile file(files[i]);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(now.addSecs(i * 60), QFileDevice::FileModificationTime));
    }
    QVERIFY(QFile::link(files[0], path("link.png"))); // no entry of its own
    QVERIFY(QDir().mkpath(path("subfolder")));
    PlayerStart start;
    start.arguments = QStringList{m_dir->path()};
    PlayerProcess player(start);
    QVERIFY(player.waitForColour(kBlue));
    walk(player, "alt+Right", {kGreen, kRed, kBlue});
    QCOMPARE(player.noise(), QString());
}

void TestMedia::readsAPlaylistFile()
{
    // Two eyes, one above the other; the second entry shows the lower one first.
    QImage eyes(64, 64, QImage::Format_RGB32);
    eyes.fill(kRed);
    for (int y = 32; y < 64; ++y) {
        for (int x = 0; x < 64; ++x)
            eyes.setPixel(x, y, kBlue);
    }
    QVERIFY(QDir().mkpath(path("lists")));
    QVERIFY(eyes.save(path("eyes.png")));
    QVERIFY(eyes.save(path("eyes2.png")));
    writePicture(path("lists/green.png"), kGreen);
    writeFile(path("lists/tour.vspl"),
              R"([{"media": "../eyes.png", "stereo": "OverUnder"},
                  {"media": "../eyes2.png", "stereo": "OverUnder_I", "thumb": "t.png"},
                  {"media": "green.png", "stereo": "None"}])");
    PlayerStart start;
    start.directory = path("");
    start.arguments = QStringList{"lists/tour.vspl"};
    PlayerProcess player(start);
    QVERIFY(player.waitForColour(kRed));
    walk(player, "alt+Right", {kBlue, kGreen});
    QCOMPARE(player.noise(), QString());
}

void TestMedia::showsSlides_data()
{
    QTest::addColumn<QByteArray>("setting");
    QTest::addColumn<QString>("key"); // of a loop mode
    QTest::addColumn<QVector<QRgb>>("colours"); // in turn, after the first
    const auto row = [](const char *title, const QByteArray &setting, const char *key,
                        const QVector<QRgb> &colours) {
        QTest::newRow(title) << setting << QString(key) << colours;
    };
    row("all in a circle", "", "", {kGreen, kBlue, kRed});
    row("once, then the info screen", "general\\loopMode=0", "", {kGreen, kBlue, kInfoScreen});
    row("one picture again and again", "general\\loopMode=2", "", {kRed});
    row("in a circle after a key", "general\\loopMode=2", "ctrl+r", {kGreen, kBlue, kRed});
    row("no longer than the user wants", "playlist\\imageDisplayDurationNone=true", "", {kRed});
}

void TestMedia::showsSlides()
{
    QFETCH(QByteArray, setting);
    QFETCH(QString, key);
    QFETCH(QVector<QRgb>, colours);
    PlayerStart start;
    start.arguments = threeColours();
    start.settings = {"playlist\\imageDisplayDuration=1", setting};
    PlayerProcess player(start);
    QVERIFY(player.waitForColour(kRed));
    if (!key.isEmpty())
        player.keys({key});
    if (colours.size() == 1)
        QTest::qWait(2500);
    for (const QRgb colour : colours)
        QVERIFY(player.waitForColour(colour));
    QCOMPARE(player.noise(), QString());
}

QTEST_MAIN(TestMedia)
#include "tst_media.moc"
