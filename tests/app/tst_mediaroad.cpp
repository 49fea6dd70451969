// SPDX-License-Identifier: GPL-3.0-or-later
// From what the user names to what the player gets: files, folders, playlist files, metadata.
#include "RecordingLoader.h"
#include "app/DetachedThread.h"
#include "app/MediumAdvice.h"
#include "settings/VxVlcOptions.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QVector3D>

#include <memory>
#include <tuple>

using Builder = VxShaderCodeBuilder;

namespace {

const char *const kTour = R"([
    {"media": "día 1 #%.jpg", "logo": "logo.png", "thumb": "t/1.png", "stereo": "OverUnder"},
    {"media": "../b.mp4", "stereo": "SideBySide_I"}, {}, 7, {"media": "/abroad/c.jpg"}])";

} // namespace

class TestMediaRoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_app = std::make_unique<MediaApplication>();
        m_controller = m_app->controller;
        m_folder = std::make_unique<QTemporaryDir>();
    }

    void opensArgument()
    {
        const auto local = [](const char *file) { return QUrl::fromLocalFile(file); };
        const std::pair<const char *, QUrl> rows[] = {
            {"/a b/Übergröße #1 100%20 what?.jpg", local("/a b/Übergröße #1 100%20 what?.jpg")},
            {"film:one.jpg", local("film:one.jpg")}, // only looks like a scheme
            {"file:///a/%23%201.jpg", local("/a/# 1.jpg")},
            {"http://host/a%20b.mp4?c=d#e", QUrl("http://host/a%20b.mp4?c=d#e")},
            {"HTTPS://host/a.mp4", QUrl("https://host/a.mp4")},
            {"udp://@:1234", QUrl("udp://@:1234")},
            {"smb://host/share/a.mp4", QUrl("smb://host/share/a.mp4")},
            {"http://[bad", local("http://[bad")}, // no address
        };
        m_controller->openFiles(QStringList());
        for (const auto &[argument, url] : rows) {
            open(argument, true);
            QCOMPARE(opened().url, url);
            QCOMPARE(opened().error, QString());
            QVERIFY(opened().dragAndDrop && m_controller->playListIsEmpty());
        }
        QCOMPARE(m_app->loader.media.size(), int(std::size(rows)));
    }

    void opensSeveral()
    {
        m_controller->openFiles(QStringList{"/a/1.jpg", "/b/1.v2.mp4", "http://h/c%20d.mp4"}, true);
        const QList<QUrl> all{QUrl("file:///a/1.jpg"), QUrl("file:///b/1.v2.mp4"),
                              QUrl("http://h/c%20d.mp4")};
        QCOMPARE(m_controller->getPlayList(), all);
        QCOMPARE(m_controller->getPlayListNames(), QStringList({"1", "1.v2", "c d"}));
        QCOMPARE(m_controller->playListIndex(), 0);
        QCOMPARE(m_app->loader.media.size(), 1);
        QVERIFY(opened().url == all.first() && opened().dragAndDrop);

        // The same list once more starts anew, and a single medium ends it.
        m_controller->playListSetNext();
        m_controller->openFiles(all, false);
        QCOMPARE(opened().url, all.first());
        open("/a/2.jpg");
        QVERIFY(m_controller->playListIsEmpty());
        QCOMPARE(m_controller->playListIndex(), -1);
    }

    void opensFolder()
    {
        // None of these is one of the folder's files.
        QVERIFY(QFile::link(make("sub/other.jpg"), path("link.jpg")));
        make(".hidden.jpg");
        int files = 0;
        const std::tuple<int, const char *, int> rows[] = {
            {0, "Error : Directory is empty", 0},
            {1, "", 0}, // no playlist
            {2, "", 2},
            {999, "", 999},
            {1000, "Error : Cannot load more than 1000 files in a directory", 0},
        };
        for (const auto &[size, error, entries] : rows) {
            while (files < size)
                make(QString("%1 #.jpg").arg(files++));
            open(m_folder->path() + '/');
            QCOMPARE(opened().error, QString(error));
            QCOMPARE(m_controller->getPlayList().size(), entries);
            QCOMPARE(opened().url.adjusted(QUrl::RemoveFilename).isEmpty(), *error != '\0');
        }
        QCOMPARE(m_app->loader.media.size(), 5);

        // Newest first.
        QFile newest(path("7 #.jpg"));
        QVERIFY(QFile::remove(path("999 #.jpg")) && newest.open(QIODevice::ReadWrite));
        newest.setFileTime(QDateTime::currentDateTime().addSecs(60),
                           QFileDevice::FileModificationTime);
        open(m_folder->path());
        QCOMPARE(opened().url, url("7 #.jpg"));

        // Out of what a link names, not of where it stands.
        const QTemporaryDir elsewhere;
        QVERIFY(QFile::link(path("sub"), elsewhere.filePath("link")));
        open(elsewhere.filePath("link/.."));
        QCOMPARE(opened().url, url("7 #.jpg"));
    }

    void brokenPlaylistFile()
    {
        QVERIFY(QDir().mkpath(path("folder.vspl")));
        const std::pair<QString, const char *> rows[] = {
            {path("folder.vspl"), "Error : cannot open file .vspl"},
            {make("bytes.vspl", QByteArray("\xff\xfe\0 no text", 11)), "Error : cannot parse json"},
            {make("number.vspl", "42"), "Error : cannot parse json"},
        };
        for (const auto &[list, error] : rows) {
            m_controller->openFiles(QStringList{"/a/1.jpg", "/a/2.jpg"});
            open(list, true);
            QCOMPARE(opened().error, QString(error));
            QVERIFY(opened().url.isEmpty() && opened().dragAndDrop);
            QVERIFY(m_controller->playListIsEmpty());
        }
    }

    void playlistFile()
    {
        const QByteArray mark = "\xef\xbb\xbf"; // of the byte order
        const QString list = make("shows/list.vspl", mark + kTour);
        make("b.png");
        open(list);
        const QList<QUrl> media = m_controller->getPlayList();
        QCOMPARE(media.size(), 5);
        QCOMPARE(media[0], url("shows/día 1 #%.jpg"));
        QCOMPARE(media[1], QUrl::fromLocalFile(path("shows") + "/../b.mp4"));
        QCOMPARE(media[4], QUrl::fromLocalFile("/abroad/c.jpg"));
        QCOMPARE(opened().url, media[0]);
        QCOMPARE(m_controller->getDynamicLogo(media[0]), url("shows/logo.png"));
        QCOMPARE(m_controller->getDynamicLogo(media[1]), QUrl());
        QCOMPARE(m_controller->getThumb(media[0]), url("shows/t/1.png").toString());
        // Without a thumbnail of its own the medium has the picture beside it.
        QCOMPARE(m_controller->getThumb(media[1]), "file:/" + path("shows") + "/../b.png");
        QCOMPARE(m_controller->getStereoConfig(media[0]), QString("OverUnder"));
        QCOMPARE(m_controller->getStereoConfig(media[4]), QString());
    }

    void playlistFilesAddUp()
    {
        const auto openOne = [this](const QString &list, const QByteArray &media) {
            const QByteArray logo = QFileInfo(list).baseName().toLatin1() + ".png";
            open(make(list, "[{\"media\":\"" + media + "\",\"logo\":\"" + logo + "\"}]"));
        };
        openOne("1.vspl", "a.jpg");
        QVERIFY(m_controller->playListIsEmpty());
        QCOMPARE(opened().url, url("a.jpg"));
        openOne("2.vspl", "b.jpg");
        QCOMPARE(m_controller->getDynamicLogo(url("a.jpg")), url("1.png"));
        openOne("3.vspl", "a.jpg");
        openOne("sub/4.vspl", "a.jpg"); // another medium
        QCOMPARE(m_controller->getDynamicLogo(url("a.jpg")), url("3.png"));
        QCOMPARE(m_controller->getDynamicLogo(url("b.jpg")), url("2.png"));
        QCOMPARE(m_controller->getDynamicLogo(url("sub/a.jpg")), url("sub/4.png"));
    }

    // One of several, or with a suffix in capitals, it is a medium like any other.
    void notParsed()
    {
        const QByteArray list = "[{\"media\": \"x.jpg\"}]";
        for (const QStringList &names : {QStringList{"list.vspl", "a.jpg"}, {"list.VSPL"}}) {
            QStringList files;
            for (const QString &name : names)
                files.append(make(name, list));
            m_controller->openFiles(files);
            QTRY_VERIFY(!m_controller->isOpening());
            QCOMPARE(opened().url, QUrl::fromLocalFile(files.first()));
            QCOMPARE(opened().error, QString());
        }
    }

    // A disk may take minutes to answer; what is asked of the player meanwhile holds.
    void whileTheFileIsLookedAt()
    {
        const auto settle = [] {
            QTRY_VERIFY(!DetachedThread::isAtWork());
            QCoreApplication::processEvents();
        };
        m_controller->openFiles(QStringList{"/a/1.jpg", "/a/2.mp4"});
        const int before = m_app->loader.media.size();
        m_controller->openFile(make("a.mp4"));
        QVERIFY(m_controller->isOpening());
        QCOMPARE(m_app->loader.media.size(), before);
        m_controller->playListSetNext(false); // as at the end of a medium
        QCOMPARE(m_controller->playListIndex(), 0);
        settle();
        QCOMPARE(opened().url, url("a.mp4"));
        QVERIFY(m_controller->playListIsEmpty());

        m_controller->openFile(path("a.mp4"));
        m_controller->imageTimeoutSetNext();
        QCOMPARE(m_app->loader.calls, QStringList());

        // A later choice takes its place, and so does a stop.
        m_controller->openFile("http://host/b.mp4");
        settle();
        QCOMPARE(opened().url, QUrl("http://host/b.mp4"));
        QCOMPARE(m_app->loader.media.size(), before + 2);
        m_controller->openFile(path("a.mp4"));
        m_controller->clearPlayList();
        settle();
        QCOMPARE(m_app->loader.media.size(), before + 2);

        // Entries of a playlist as well, and nobody hears an answer that comes too late.
        m_controller->openFiles(QStringList{"/a/1.mp4", "/a/2.mp4"});
        QVERIFY(m_controller->isOpening());
        m_controller->playListSetNext();
        settle();
        QCOMPARE(m_app->loader.media.size(), before + 3);
        QCOMPARE(opened().url, QUrl("file:///a/2.mp4"));
        m_controller->openFile(path("a.mp4"));
        m_app.reset();
    }

    // A slave repeats its master's medium fifty times a second, whatever became of it.
    void admitsWhatIsAskedForOnce()
    {
        const QUrl film = QUrl::fromLocalFile(make("a.mp4"));
        const auto ask = [this](const QUrl &medium) {
            for (int times = 0; times < 3; ++times)
                QVERIFY(!m_controller->admits(medium, true, false));
            QTRY_VERIFY(!m_controller->isOpening());
        };
        bool admitted = false;
        m_app->loader.onMedium = [&](const QUrl &url) {
            admitted = m_controller->admits(url, true, false);
            if (url == film)
                m_controller->refuse(url, "bad");
        };
        ask(film);
        ask(film);
        QVERIFY(admitted);
        QCOMPARE(m_app->loader.media.size(), 1);
        ask(QUrl("http://host/b.mp4"));
        ask(film);
        QCOMPARE(m_app->loader.media.size(), 3);
        m_controller->openFile(film.toLocalFile()); // the user may try again
        QTRY_COMPARE(m_app->loader.media.size(), 4);
    }

    void advice()
    {
        const std::tuple<const char *, QByteArray, const char *> rows[] = {
            {"a.png", "", "The file is empty"},
            {"b.mp4", "no film, but words\n", "It holds no film"},
            {"c.mp4", QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), "ends with .png"},
            {"d.jpg", "\xff\xd8\xff\xe0", "damaged or incomplete"},
            {"e.webm", QByteArray(64, '\x02'), "Nothing in it is known as a film"},
            {"f.odd", QByteArray(64, '\x02'), "told by their suffixes"},
        };
        for (const auto &[name, content, reason] : rows) {
            const QString text = MediumAdvice::of(QUrl::fromLocalFile(make(name, content)));
            QVERIFY2(text.startsWith(path(name) + '\n') && text.contains(reason), qPrintable(text));
        }
        QVERIFY(MediumAdvice::of(url("none.mp4")).contains("no such file"));
        QVERIFY(MediumAdvice::of(QUrl("http://h/a.mp4")).contains("address"));
    }

    void thumbnail()
    {
        QCOMPARE(m_controller->getThumb(url("a.mp4")), QString());
        // One slash before the path's own: the interface's pictures read that as a local file.
        for (const QString medium : {"a #%.mp4", "b.c.mp4", "a"})
            QCOMPARE(m_controller->getThumb(url(medium)),
                     "file:/" + make(medium.section(".mp4", 0, 0) + ".png"));
    }

    void formats()
    {
        const std::tuple<const char *, bool, int, int> rows[] = {
            {"file:///A.PNG", true, 0, 0},
            {"file:///a.MKV", false, 1, 1},
            {"http://h/a.m3u8?b=c.jpg", false, 1, 1},
            {"file:///a.yuv", false, 2, 1},
            {"file:///a.txt", false, 0, 0},
            {"file:///mp4", false, 0, 0},
            {"", false, 0, 0},
        };
        VxVlcOptions options;
        VxVlcOptions::setInstance(&options);
        for (const auto &[medium, image, video, customVideo] : rows) {
            options.custom = false;
            QCOMPARE(m_controller->isImageFile(QUrl(medium)), image);
            QCOMPARE(m_controller->isVideoFile(QUrl(medium)), video);
            options.custom = true;
            QCOMPARE(m_controller->isVideoFile(QUrl(medium)), customVideo);
        }
        QCOMPARE(m_controller->getSupportedVideoFormats().size(), 26);
        VxVlcOptions::setInstance(nullptr);
        QCOMPARE(m_controller->checkFilePath(QUrl("qrc:/a.jpg")), QUrl("file:/a.jpg"));
        QCOMPARE(m_controller->checkFilePath(QUrl("http://h/a.jpg")), QUrl("http://h/a.jpg"));
    }

    void orientationFromMetadata()
    {
        m_controller->setYaw(2);
        m_controller->setRoll(1);
        m_controller->setFov(150);
        m_app->loader.setMetadata({{"Initial yaw", 90.F}, {"Initial pitch", -45.F}});
        m_app->provider->setTextureSize(QSize(4096, 2048)); // joins them
        QCOMPARE(m_app->loader.player.property("fileMetadata").toMap().value("Texture size"),
                 QSize(4096, 2048));
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
        m_app->settingsObject->set("instance/input/projection", Builder::STANDARD);
        m_controller->readMetaData(QUrl("file:///a.jpg"));
        QCOMPARE(m_controller->fov(), 180.F);
    }

    void stereoFromPlaylist()
    {
        constexpr int kAuto = Builder::STEREO_AUTO;
        constexpr int kBefore = Builder::STEREO_3D_SIDEBYSIDE_INVERTED;
        // The user's choice, the playlist's word, the file's code, and what comes of them.
        const std::tuple<int, QByteArray, int, int> rows[] = {
            {kAuto, "", -1, kBefore}, // nothing known stays
            {kAuto, "Sideways", -1, kBefore},
            {kAuto, "None", 2, Builder::STEREO_2D}, // the list's word wins
            {kAuto, "OverUnder", 0, Builder::STEREO_3D_OVERUNDER},
            {kAuto, "SideBySide", 0, Builder::STEREO_3D_SIDEBYSIDE},
            {kAuto, "OverUnder_I", 0, Builder::STEREO_3D_OVERUNDER_INVERTED},
            {kAuto, "SideBySide_I", 0, Builder::STEREO_3D_SIDEBYSIDE_INVERTED},
            {kAuto, "", 0, Builder::STEREO_2D},
            {kAuto, "", 1, Builder::STEREO_3D_SIDEBYSIDE},
            {kAuto, "", 2, Builder::STEREO_3D_OVERUNDER},
            {Builder::STEREO_2D, "OverUnder", 1, Builder::STEREO_2D},
        };
        const QString stereoscopy = "instance/input/stereoscopy";
        for (const auto &[setting, word, ofTheFile, mode] : rows) {
            open(make("list.vspl",
                      "[{\"media\": \"a.jpg\", \"stereo\": \"" + word
                          + "\"}, {\"media\": \"b.jpg\"}]"));
            m_app->builder->setStereoMode(kBefore);
            m_app->loader.setMetadata({{"Stereoscopy", ofTheFile}});
            m_app->settingsObject->set(stereoscopy, setting);
            QCOMPARE(m_app->builder->stereoMode(), mode);
        }
        // Outside of a playlist its words say nothing.
        open(path("a.jpg"));
        m_app->builder->setStereoMode(kBefore);
        m_app->loader.setMetadata({});
        m_app->settingsObject->set(stereoscopy, kAuto);
        QCOMPARE(m_app->builder->stereoMode(), kBefore);
    }

    void projectionFromMetadata()
    {
        const std::tuple<int, QVariantMap, int> rows[] = {
            {Builder::AUTO, {{"Projection", 17}}, Builder::FISHEYE_CIRCLE}, // nothing known stays
            {Builder::AUTO, {{"Projection", 0}}, Builder::STANDARD},
            {Builder::AUTO, {{"Projection", 1}}, Builder::EQUIRECTANGULAR},
            {Builder::AUTO, {{"Projection", 256}}, Builder::CUBEMAP},
            {Builder::CUBEMAP, {{"Projection", 1}}, Builder::CUBEMAP}, // the user's choice wins
        };
        for (const auto &[setting, metadata, source] : rows) {
            m_app->builder->setProjectionSource(Builder::FISHEYE_CIRCLE);
            m_app->loader.setMetadata(metadata);
            m_app->settingsObject->set("instance/input/projection", setting);
            QCOMPARE(m_app->builder->projectionSource(), source);
        }
    }

    void metadataText()
    {
        const std::pair<QVariantMap, QString> rows[] = {
            {{}, ""},
            {{{"Frame width", 3840U}, {"Frame height", 1920U}, {"Video frame rate", 29.97}},
             "Frame width : 3840 \nFrame height : 1920 \nVideo frame rate : 29.97 \n"},
            {{{"Projection", 256}, {"Stereoscopy", 2}, {"Writing Tool", "%1 stitcher"}},
             "Projection : Cubemap \nStereoscopy : Over under \nWriting Tool : %1 stitcher \n"},
            {{{"Projection", 9}, {"Stereoscopy", 9}},
             "Projection : Unknown \nStereoscopy : Unknown \n"},
            {{{"Projection", 0}, {"Stereoscopy", 0}},
             "Projection : Standard \nStereoscopy : None \n"},
        };
        for (const auto &[metadata, text] : rows)
            QCOMPARE(m_controller->logMetaData(QUrl("file:///a%20b.mp4"), metadata),
                     "Media : " + QUrl("file:///a%20b.mp4").toString() + " \n" + text);
    }

private:
    /// Opens a file and waits until it has been looked at.
    void open(const QString &file, bool dragAndDrop = false)
    {
        m_controller->openFile(file, dragAndDrop);
        QTRY_VERIFY(!m_controller->isOpening());
    }

    /// What the loader was given last.
    const RecordingLoader::Medium &opened() const { return m_app->loader.media.last(); }

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

    std::unique_ptr<MediaApplication> m_app;
    std::unique_ptr<QTemporaryDir> m_folder;
    VxGlobalObject *m_controller = nullptr;
};

QTEST_GUILESS_MAIN(TestMediaRoad)
#include "tst_mediaroad.moc"
