// SPDX-License-Identifier: GPL-3.0-or-later
// From what the user names to what the player gets: files, folders, playlist files, metadata.
#include "RecordingLoader.h"
#include "settings/VxVlcOptions.h"
#include "tests/common/FakeApplication.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QVector3D>

#include <memory>

class TestMediaRoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_app = std::make_unique<FakeApplication>();
        m_app->makeObjects();
        m_controller = m_app->controller;
        m_loader = std::make_unique<RecordingLoader>();
        m_controller->setMediaLoader(m_loader.get());
        m_folder = std::make_unique<QTemporaryDir>();
    }

    void opensArgument_data();
    void opensArgument();
    void opensNothing();
    void opensSeveral();
    void opensFolder_data();
    void opensFolder();
    void folderIsSortedByTime();
    void brokenPlaylistFile_data();
    void brokenPlaylistFile();
    void playlistFile();
    void playlistFileLacksMembers();
    void playlistFilesAddUp();
    void playlistFileOfOne();
    void notParsed_data();
    void notParsed();
    void thumbnail_data();
    void thumbnail();
    void formats_data();
    void formats();
    void resourceIsAFile();
    void orientationFromMetadata();
    void stereoFromPlaylist_data();
    void stereoFromPlaylist();
    void projectionFromMetadata_data();
    void projectionFromMetadata();
    void metadataText();
    void textureSizeEntersMetadata();
    void inspectsImages();
    void leavesTheEventLoop();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    QUrl url(const QString &name) const { return QUrl::fromLocalFile(path(name)); }

    QString make(const QString &name, const QByteArray &content = "x") const
    {
        QFile file(path(name));
        if (!QFileInfo(file).dir().mkpath(".") || !file.open(QIODevice::WriteOnly)
            || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    std::unique_ptr<FakeApplication> m_app;
    std::unique_ptr<RecordingLoader> m_loader;
    std::unique_ptr<QTemporaryDir> m_folder;
    VxGlobalObject *m_controller = nullptr;
};

void TestMediaRoad::opensArgument_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QUrl>("medium");
    const auto local = [](const QString &path) { return QUrl::fromLocalFile(path); };
    QTest::newRow("path") << "/a/b.jpg" << local("/a/b.jpg");
    QTest::newRow("blanks, umlauts") << "/a b/Übergröße.jpg" << local("/a b/Übergröße.jpg");
    QTest::newRow("number sign") << "/a/#1.jpg" << local("/a/#1.jpg");
    QTest::newRow("per cent sign") << "/a/100%20.jpg" << local("/a/100%20.jpg");
    QTest::newRow("question mark") << "/a/what?.jpg" << local("/a/what?.jpg");
    QTest::newRow("colon") << "/a:b/c:d.jpg" << local("/a:b/c:d.jpg");
    QTest::newRow("what only looks like a scheme") << "film:one.jpg" << local("film:one.jpg");
    QTest::newRow("URL of a file") << "file:///a/%23%201.jpg" << local("/a/# 1.jpg");
    QTest::newRow("http") << "http://host/a%20b.mp4?c=d#e" << QUrl("http://host/a%20b.mp4?c=d#e");
    QTest::newRow("https in capitals") << "HTTPS://host/a.mp4" << QUrl("https://host/a.mp4");
    QTest::newRow("rtsp") << "rtsp://host:554/live" << QUrl("rtsp://host:554/live");
    QTest::newRow("udp") << "udp://@:1234" << QUrl("udp://@:1234");
}

void TestMediaRoad::opensArgument()
{
    QFETCH(QString, argument);
    QFETCH(QUrl, medium);
    m_controller->openFile(argument, true);
    QCOMPARE(m_loader->media.size(), 1);
    const RecordingLoader::Medium &opened = m_loader->media.first();
    QCOMPARE(opened.url, medium);
    QCOMPARE(opened.error, QString());
    QVERIFY(opened.dragAndDrop);
    QVERIFY(!opened.clearPlaylist);
    QVERIFY(m_controller->playListIsEmpty());
    QCOMPARE(m_controller->playListIndex(), -1);
}

void TestMediaRoad::opensNothing()
{
    m_controller->openFiles(QStringList());
    QVERIFY(m_loader->media.isEmpty());
}

void TestMediaRoad::opensSeveral()
{
    QSignalSpy changed(m_controller, &VxGlobalObject::playListChanged);
    m_controller->openFiles(QStringList{"/a/1.jpg", "/b/1.v2.mp4", "http://host/c%20d.mp4"}, true);
    const QList<QUrl> all{QUrl::fromLocalFile("/a/1.jpg"), QUrl::fromLocalFile("/b/1.v2.mp4"),
                          QUrl("http://host/c%20d.mp4")};
    QCOMPARE(m_controller->getPlayList(), all);
    QCOMPARE(m_controller->getPlayListNames(), QStringList({"1", "1.v2", "c d"}));
    QCOMPARE(m_controller->playListIndex(), 0);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m_loader->media.size(), 1);
    QCOMPARE(m_loader->media.first().url, all.first());
    QVERIFY(m_loader->media.first().dragAndDrop);

    // The same list once more starts anew, and a single medium ends it.
    m_controller->playListSetNext();
    m_controller->openFiles(all, false);
    QCOMPARE(m_loader->media.last().url, all.first());
    m_controller->openFile("/a/2.jpg");
    QVERIFY(m_controller->playListIsEmpty());
    QCOMPARE(m_controller->playListIndex(), -1);
}

void TestMediaRoad::opensFolder_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("entries");
    QTest::newRow("empty") << 0 << "Error : Directory is empty" << 0;
    QTest::newRow("one file is no playlist") << 1 << "" << 0;
    QTest::newRow("two files") << 2 << "" << 2;
    QTest::newRow("the most") << 999 << "" << 999;
    QTest::newRow("one too many") << 1000
                                  << "Error : Cannot load more than 1000 files in a directory" << 0;
}

void TestMediaRoad::opensFolder()
{
    QFETCH(int, files);
    QFETCH(QString, error);
    QFETCH(int, entries);
    for (int i = 0; i < files; ++i)
        make(QString("%1 #.jpg").arg(i));
    // None of these is one of the folder's files.
    QVERIFY(QFile::link(make("sub/other.jpg"), path("link.jpg")));
    make(".hidden.jpg");

    m_controller->openFile(m_folder->path());
    QCOMPARE(m_loader->media.size(), 1);
    QCOMPARE(m_loader->media.first().error, error);
    QCOMPARE(m_controller->getPlayList().size(), entries);
    if (error.isEmpty())
        QCOMPARE(QFileInfo(m_loader->media.first().url.toLocalFile()).path(), m_folder->path());
    else
        QVERIFY(m_loader->media.first().url.isEmpty());
}

void TestMediaRoad::folderIsSortedByTime()
{
    const QStringList newestFirst{"b.jpg", "c.jpg", "a.jpg"};
    QList<QUrl> expected;
    QDateTime time = QDateTime::currentDateTime();
    for (const QString &name : newestFirst) {
        QFile file(make(name));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
        time = time.addSecs(-60);
        expected.append(url(name));
    }
    m_controller->openFile(m_folder->path() + '/');
    QCOMPARE(m_controller->getPlayList(), expected);
}

void TestMediaRoad::brokenPlaylistFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    const QString parse = "Error : cannot parse json";
    QTest::newRow("missing") << QByteArray("missing") << "Error : cannot open file .vspl";
    QTest::newRow("a folder") << QByteArray("folder") << "Error : cannot open file .vspl";
    QTest::newRow("no bytes") << QByteArray() << parse;
    QTest::newRow("cut off") << QByteArray("[{\"media\":") << parse;
    QTest::newRow("no JSON") << QByteArray("\xff\xfe\0 not a playlist", 19) << parse;
    QTest::newRow("a bare number") << QByteArray("42") << parse;
    QTest::newRow("an object") << QByteArray("{\"media\": \"a.jpg\"}")
                               << "Error : json is not an array";
    QTest::newRow("an empty array") << QByteArray("[]") << "Error : json is empty";
}

void TestMediaRoad::brokenPlaylistFile()
{
    QFETCH(QByteArray, content);
    m_controller->openFiles(QStringList{"/a/1.jpg", "/a/2.jpg"});
    m_loader->media.clear();
    if (content == "folder")
        QVERIFY(QDir().mkpath(path("list.vspl")));
    else if (content != "missing")
        make("list.vspl", content);
    m_controller->openFile(path("list.vspl"), true);
    QCOMPARE(m_loader->media.size(), 1);
    QTEST(m_loader->media.first().error, "error");
    QVERIFY(m_loader->media.first().url.isEmpty());
    QVERIFY(m_loader->media.first().dragAndDrop);
    QVERIFY(m_controller->playListIsEmpty());

    m_controller->openFile("/a/3.jpg");
    QCOMPARE(m_loader->media.last().url, QUrl::fromLocalFile("/a/3.jpg"));
    QCOMPARE(m_loader->media.last().error, QString());
}

void TestMediaRoad::playlistFile()
{
    const QString list = make("shows/list.vspl", R"([
        {"media": "día 1 #%.jpg", "logo": "logo.png", "thumb": "t/1.png", "stereo": "OverUnder"},
        {"media": "../b.mp4", "stereo": "SideBySide_I"},
        {"media": "/abroad/c.jpg"}])");
    m_controller->openFile(list);
    const QList<QUrl> media{url("shows/día 1 #%.jpg"),
                            QUrl::fromLocalFile(path("shows") + "/../b.mp4"),
                            QUrl::fromLocalFile("/abroad/c.jpg")};
    QCOMPARE(m_controller->getPlayList(), media);
    QCOMPARE(m_loader->media.first().url, media[0]);
    QCOMPARE(m_controller->getDynamicLogo(media[0]), url("shows/logo.png"));
    QCOMPARE(m_controller->getThumb(media[0]), url("shows/t/1.png").toString());
    QCOMPARE(m_controller->getStereoConfig(media[0]), QString("OverUnder"));
    QCOMPARE(m_controller->getStereoConfig(media[1]), QString("SideBySide_I"));
    QCOMPARE(m_controller->getDynamicLogo(QUrl("file:///unknown.jpg")), QUrl());
}

void TestMediaRoad::playlistFileLacksMembers()
{
    make("a.png");
    m_controller->openFile(make("list.vspl", "\xef\xbb\xbf[{\"media\": \"a.jpg\"}, {}, 7]"));
    QCOMPARE(m_controller->getPlayList().size(), 3);
    QCOMPARE(m_controller->getDynamicLogo(url("a.jpg")), QUrl());
    QCOMPARE(m_controller->getStereoConfig(url("a.jpg")), QString());
    // Without a thumbnail of its own the medium has the picture beside it.
    QCOMPARE(m_controller->getThumb(url("a.jpg")), "file:/" + path("a.png"));
}

void TestMediaRoad::playlistFilesAddUp()
{
    const auto entry = [](const char *media, const char *logo) -> QByteArray {
        return QByteArray("[{\"media\":\"") + media + "\",\"logo\":\"" + logo + "\"}]";
    };
    m_controller->openFile(make("1.vspl", entry("a.jpg", "1.png")));
    m_controller->openFile(make("2.vspl", entry("b.jpg", "2.png")));
    QCOMPARE(m_controller->getDynamicLogo(url("a.jpg")), url("1.png"));
    QCOMPARE(m_controller->getDynamicLogo(url("b.jpg")), url("2.png"));
    m_controller->openFile(make("3.vspl", entry("a.jpg", "3.png")));
    QCOMPARE(m_controller->getDynamicLogo(url("a.jpg")), url("3.png"));
    // The same name in another folder is another medium.
    m_controller->openFile(make("sub/4.vspl", entry("a.jpg", "4.png")));
    QCOMPARE(m_controller->getDynamicLogo(url("a.jpg")), url("3.png"));
    QCOMPARE(m_controller->getDynamicLogo(url("sub/a.jpg")), url("sub/4.png"));
}

void TestMediaRoad::playlistFileOfOne()
{
    m_controller->openFile(make("list.vspl", "[{\"media\": \"a.jpg\"}]"));
    QVERIFY(m_controller->playListIsEmpty());
    QCOMPARE(m_loader->media.first().url, url("a.jpg"));
}

void TestMediaRoad::notParsed_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("one of several") << QStringList{"list.vspl", "a.jpg"};
    QTest::newRow("suffix in capitals") << QStringList{"list.VSPL"};
}

void TestMediaRoad::notParsed()
{
    QFETCH(QStringList, names);
    QStringList files;
    for (const QString &name : names)
        files.append(make(name, "[{\"media\": \"x.jpg\"}]"));
    m_controller->openFiles(files);
    QCOMPARE(m_loader->media.first().url, QUrl::fromLocalFile(files.first()));
    QCOMPARE(m_loader->media.first().error, QString());
}

void TestMediaRoad::thumbnail_data()
{
    QTest::addColumn<QString>("existing");
    QTest::addColumn<QString>("medium");
    QTest::addColumn<bool>("found");
    QTest::newRow("beside the medium") << "a.png"
                                       << "a.mp4" << true;
    QTest::newRow("only the last suffix is replaced") << "a.b.png"
                                                      << "a.b.mp4" << true;
    QTest::newRow("blanks and signs") << "a #%.png"
                                      << "a #%.mp4" << true;
    QTest::newRow("of another medium") << "b.png"
                                       << "a.mp4" << false;
    QTest::newRow("no suffix") << "a.png"
                               << "a" << true;
}

void TestMediaRoad::thumbnail()
{
    QFETCH(QString, existing);
    QFETCH(QString, medium);
    const QString picture = make(existing);
    QFETCH(bool, found);
    // One slash before the path's own: the interface's pictures read that as a local file.
    QCOMPARE(m_controller->getThumb(url(medium)), found ? "file:/" + picture : QString());
}

void TestMediaRoad::formats_data()
{
    QTest::addColumn<QUrl>("medium");
    QTest::addColumn<bool>("image");
    QTest::addColumn<int>("video");
    QTest::addColumn<int>("customVideo");
    QTest::newRow("picture") << QUrl("file:///a.jpg") << true << 0 << 0;
    QTest::newRow("picture in capitals") << QUrl("file:///A.PNG") << true << 0 << 0;
    QTest::newRow("two suffixes") << QUrl("file:///a.mp4.jpg") << true << 0 << 0;
    QTest::newRow("video") << QUrl("file:///a.mp4") << false << 1 << 1;
    QTest::newRow("video in capitals") << QUrl("file:///a.MKV") << false << 1 << 1;
    QTest::newRow("playlist of a stream") << QUrl("http://h/a.m3u8?b=c.jpg") << false << 1 << 1;
    QTest::newRow("raw video") << QUrl("file:///a.yuv") << false << 2 << 1;
    QTest::newRow("text") << QUrl("file:///a.txt") << false << 0 << 0;
    QTest::newRow("no suffix") << QUrl("file:///mp4") << false << 0 << 0;
    QTest::newRow("stream") << QUrl("rtsp://host/live") << false << 0 << 0;
    QTest::newRow("nothing") << QUrl() << false << 0 << 0;
}

void TestMediaRoad::formats()
{
    QFETCH(QUrl, medium);
    VxVlcOptions options;
    VxVlcOptions::setInstance(&options);
    QTEST(m_controller->isImageFile(medium), "image");
    QTEST(m_controller->isVideoFile(medium), "video");
    QVERIFY(!m_controller->getSupportedVideoFormats().contains("yuv"));
    options.custom = true;
    QTEST(m_controller->isVideoFile(medium), "customVideo");
    QCOMPARE(m_controller->getSupportedVideoFormats().size(), 26);
    VxVlcOptions::setInstance(nullptr);
}

void TestMediaRoad::resourceIsAFile()
{
    QCOMPARE(m_controller->checkFilePath(QUrl("qrc:/a.jpg")), QUrl("file:/a.jpg"));
    QCOMPARE(m_controller->checkFilePath(QUrl("http://h/a.jpg")), QUrl("http://h/a.jpg"));
    QVERIFY(m_controller->isFile(QUrl("file:/a.jpg")));
    QVERIFY(!m_controller->isFile(QUrl("qrc:/a.jpg")));
}

void TestMediaRoad::orientationFromMetadata()
{
    m_controller->setYaw(2);
    m_controller->setRoll(1);
    m_controller->setFov(150);
    m_loader->player.fileMetadata = {{"Initial yaw", 90.F}, {"Initial pitch", -45.F}};
    m_controller->resetYawPitchRollFov();
    QCOMPARE(m_controller->yaw(), 1.57079628F);
    QCOMPARE(m_controller->pitch(), -0.785398140F);
    QCOMPARE(m_controller->roll(), 0.F);
    QCOMPARE(m_controller->fov(), 90.F);
    const QVector3D axis = m_controller->rotationMatrix().mapVector(QVector3D(0, 0, -1));
    QVERIFY(axis.x() > 0.7F && axis.y() > 0.7F);

    m_controller->resetYawPitchRollFov({{"Initial roll", 180.F}});
    QCOMPARE(m_controller->yaw(), 0.F);
    QVERIFY(qAbs(m_controller->roll()) > 3.14F);

    m_app->settingsObject->set("instance/input/projection", VxShaderCodeBuilder::STANDARD);
    m_controller->readMetaData(QUrl("file:///a.jpg"));
    QCOMPARE(m_controller->fov(), 180.F);
}

void TestMediaRoad::stereoFromPlaylist_data()
{
    QTest::addColumn<int>("setting");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<int>("ofTheFile");
    QTest::addColumn<int>("mode");
    using Builder = VxShaderCodeBuilder;
    const int automatic = Builder::STEREO_AUTO;
    const int before = Builder::STEREO_3D_SIDEBYSIDE_INVERTED;
    QTest::newRow("nothing known stays") << automatic << QByteArray() << -1 << before;
    QTest::newRow("unknown word stays") << automatic << QByteArray("Sideways") << -1 << before;
    QTest::newRow("None") << automatic << QByteArray("None") << 2 << int(Builder::STEREO_2D);
    QTest::newRow("OverUnder") << automatic << QByteArray("OverUnder") << 0
                               << int(Builder::STEREO_3D_OVERUNDER);
    QTest::newRow("SideBySide") << automatic << QByteArray("SideBySide") << 0
                                << int(Builder::STEREO_3D_SIDEBYSIDE);
    QTest::newRow("OverUnder_I") << automatic << QByteArray("OverUnder_I") << 0
                                 << int(Builder::STEREO_3D_OVERUNDER_INVERTED);
    QTest::newRow("SideBySide_I") << automatic << QByteArray("SideBySide_I") << 0
                                  << int(Builder::STEREO_3D_SIDEBYSIDE_INVERTED);
    QTest::newRow("the file: one picture")
        << automatic << QByteArray() << 0 << int(Builder::STEREO_2D);
    QTest::newRow("the file: side by side")
        << automatic << QByteArray() << 1 << int(Builder::STEREO_3D_SIDEBYSIDE);
    QTest::newRow("the file: over under")
        << automatic << QByteArray() << 2 << int(Builder::STEREO_3D_OVERUNDER);
    QTest::newRow("the file: unknown") << automatic << QByteArray() << 9 << before;
    QTest::newRow("the user's choice wins")
        << int(Builder::STEREO_2D) << QByteArray("OverUnder") << 1 << int(Builder::STEREO_2D);
}

void TestMediaRoad::stereoFromPlaylist()
{
    QFETCH(int, setting);
    QFETCH(QByteArray, word);
    QFETCH(int, ofTheFile);
    m_controller->openFile(
        make("list.vspl",
             "[{\"media\": \"a.jpg\", \"stereo\": \"" + word + "\"}, {\"media\": \"b.jpg\"}]"));
    m_app->builder->setStereoMode(VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE_INVERTED);
    if (ofTheFile >= 0)
        m_loader->player.fileMetadata = {{"Stereoscopy", ofTheFile}};
    m_app->settingsObject->set("instance/input/stereoscopy", setting);
    QTEST(m_app->builder->stereoMode(), "mode");

    // Outside of a playlist its words say nothing.
    m_controller->openFile(path("a.jpg"));
    m_app->builder->setStereoMode(VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE_INVERTED);
    m_loader->player.fileMetadata.clear();
    m_app->settingsObject->set("instance/input/stereoscopy", VxShaderCodeBuilder::STEREO_AUTO);
    QCOMPARE(m_app->builder->stereoMode(), int(VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE_INVERTED));
}

void TestMediaRoad::projectionFromMetadata_data()
{
    QTest::addColumn<int>("setting");
    QTest::addColumn<QVariantMap>("metadata");
    QTest::addColumn<int>("source");
    using Builder = VxShaderCodeBuilder;
    const int before = Builder::FISHEYE_CIRCLE;
    const int automatic = Builder::AUTO;
    const auto coded = [](int code) { return QVariantMap{{"Projection", code}}; };
    QTest::newRow("nothing known stays") << automatic << QVariantMap() << before;
    QTest::newRow("unknown stays") << automatic << coded(17) << before;
    QTest::newRow("flat") << automatic << coded(0) << int(Builder::STANDARD);
    QTest::newRow("equirectangular") << automatic << coded(1) << int(Builder::EQUIRECTANGULAR);
    QTest::newRow("cube map") << automatic << coded(256) << int(Builder::CUBEMAP);
    QTest::newRow("the user's choice wins")
        << int(Builder::CUBEMAP) << coded(1) << int(Builder::CUBEMAP);
}

void TestMediaRoad::projectionFromMetadata()
{
    QFETCH(int, setting);
    QFETCH(QVariantMap, metadata);
    m_app->builder->setProjectionSource(VxShaderCodeBuilder::FISHEYE_CIRCLE);
    m_loader->player.fileMetadata = metadata;
    m_app->settingsObject->set("instance/input/projection", setting);
    QTEST(m_app->builder->projectionSource(), "source");
}

void TestMediaRoad::metadataText()
{
    const QUrl medium("file:///a%20b.mp4");
    QCOMPARE(m_controller->logMetaData(medium, {}), "Media : " + medium.toString() + " \n");
    QCOMPARE(m_controller->logMetaData("x",
                                       {{"Frame width", 3840U},
                                        {"Frame height", 1920U},
                                        {"Video frame rate", 29.97},
                                        {"Projection", 256},
                                        {"Stereoscopy", 2},
                                        {"Writing Tool", "%1 stitcher"}}),
             QString("Media : x \nFrame width : 3840 \nFrame height : 1920 \n"
                     "Video frame rate : 29.97 \nProjection : Cubemap \n"
                     "Stereoscopy : Over under \nWriting Tool : %1 stitcher \n"));
    QCOMPARE(m_controller->logMetaData("x", {{"Projection", 9}, {"Stereoscopy", 9}}),
             QString("Media : x \nProjection : Unknown \nStereoscopy : Unknown \n"));
    QCOMPARE(m_controller->logMetaData("x", {{"Projection", 0}, {"Stereoscopy", 0}}),
             QString("Media : x \nProjection : Standard \nStereoscopy : None \n"));
}

void TestMediaRoad::textureSizeEntersMetadata()
{
    m_loader->player.fileMetadata = {{"Initial yaw", 90.F}};
    m_app->provider->setTextureSize(QSize(4096, 2048));
    QCOMPARE(m_loader->player.fileMetadata.value("Texture size").toSize(), QSize(4096, 2048));
    QCOMPARE(m_loader->player.fileMetadata.value("Initial yaw").toFloat(), 90.F);
}

void TestMediaRoad::inspectsImages()
{
    QSignalSpy inspected(m_controller, &VxGlobalObject::imageInspected);
    QImage image(64, 32, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QVERIFY(image.save(path("good.jpg")));
    QFile good(path("good.jpg"));
    QVERIFY(good.open(QIODevice::ReadOnly));
    make("cut.jpg", good.read(good.size() - 10));

    m_controller->inspectImage(url("missing.jpg"));
    QTRY_COMPARE(inspected.count(), 1);
    QCOMPARE(inspected[0], (QVariantList{url("missing.jpg"), false}));
    // The decoder starts before the whole file has been looked at; a damaged one is told of then.
    m_controller->inspectImage(url("cut.jpg"));
    QTRY_COMPARE(inspected.count(), 3);
    QCOMPARE(inspected[1], (QVariantList{url("cut.jpg"), true}));
    QCOMPARE(inspected[2], (QVariantList{url("cut.jpg"), false}));
    m_controller->inspectImage(url("good.jpg"));
    QTRY_COMPARE(inspected.count(), 4);
    QCOMPARE(inspected[3], (QVariantList{url("good.jpg"), true}));
}

void TestMediaRoad::leavesTheEventLoop()
{
    QTimer::singleShot(0, m_controller, &VxGlobalObject::quit);
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(m_loader->calls, QStringList{"destroyVideoPlayer"});
    QTimer::singleShot(0, m_controller, &VxGlobalObject::restart);
    QCOMPARE(QCoreApplication::exec(), 123456789);
}

QTEST_GUILESS_MAIN(TestMediaRoad)
#include "tst_mediaroad.moc"
