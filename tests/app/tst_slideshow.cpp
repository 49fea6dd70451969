// SPDX-License-Identifier: GPL-3.0-or-later
// Steps through a playlist and the timer of still images.
#include "RecordingLoader.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <tuple>

class TestSlideShow : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_app = std::make_unique<MediaApplication>();
        m_controller = m_app->controller;
        m_timer = m_app->timer(false);
    }

    void steps()
    {
        using Mode = VxGlobalObject;
        const std::tuple<int, int, bool, int> rows[] = {
            {Mode::NoLoop, 2, true, 0}, // the user's step goes round whatever the mode
            {Mode::NoLoop, 0, false, 1},  {Mode::NoLoop, 2, false, -1}, // the end of the list
            {Mode::LoopAll, 2, false, 0}, {Mode::LoopFile, 1, false, 1},
        };
        for (const auto &[loopMode, from, forced, shown] : rows) {
            init();
            openList(3);
            m_controller->setLoopMode(loopMode);
            m_controller->choosePlayListIndex(from);
            m_app->loader.media.clear();
            QSignalSpy end(m_controller, &VxGlobalObject::endOfPlaylistReached);
            m_controller->playListSetNext(forced);
            QCOMPARE(end.count(), shown < 0 ? 1 : 0);
            QCOMPARE(m_app->loader.media.size(), shown < 0 ? 0 : 1);
            QCOMPARE(m_controller->playListIndex(), shown < 0 ? from : shown);
        }
    }

    void sameIndexIsNoStep()
    {
        openList(3);
        m_controller->choosePlayListIndex(0);
        m_controller->setProperty("playListIndex", 7); // beyond the list
        QVERIFY(m_app->loader.media.isEmpty());
        m_controller->playListSetNext();
        QCOMPARE(m_controller->playListIndex(), 2);
        QCOMPARE(m_app->loader.media.size(), 1);

        m_controller->clearPlayList();
        m_controller->playListSetNext();
        m_controller->playListSetPrevious();
        QCOMPARE(m_controller->playListIndex(), -1);
        QCOMPARE(m_app->loader.media.size(), 1);
    }

    void displayTime()
    {
        m_controller->startTimerNextImage();
        QCOMPARE(m_timer->interval(), 30000);
        // The last is as much as the timer can count.
        const std::pair<int, int> rows[] = {{7, 7000}, {-7, 1000}, {99999999, 2147483000}};
        for (const auto &[seconds, milliseconds] : rows) {
            m_app->settingsObject->set("application/playlist/imageDisplayDuration", seconds);
            m_controller->startTimerNextImage();
            QCOMPARE(m_timer->interval(), milliseconds);
        }
        for (const bool none : {true, false}) {
            m_app->settingsObject->set("application/playlist/imageDisplayDurationNone", none);
            for (const auto start :
                 {&VxGlobalObject::startTimerNextImage, &VxGlobalObject::resumeTimerNextImage}) {
                m_timer->stop();
                (m_controller->*start)();
                QCOMPARE(m_timer->isActive(), !none);
            }
        }
    }

    void nextMediumEndsTheTime()
    {
        openList(3);
        m_controller->startTimerNextImage();
        m_controller->playListSetNext();
        QVERIFY(!m_timer->isActive());
        m_controller->startTimerNextImage();
        m_controller->openFile("/other.jpg");
        QVERIFY(!m_timer->isActive());
    }

    void pause()
    {
        m_controller->startTimerNextImage();
        m_controller->pauseTimerNextImage();
        QVERIFY(!m_timer->isActive());
        m_controller->pauseTimerNextImage(); // what remains is not forgotten
        m_controller->resumeTimerNextImage();
        QVERIFY(m_timer->isActive());
        QVERIFY(m_timer->interval() > 25000 && m_timer->interval() < 32000);

        // However little was left, the picture stays for a moment.
        m_timer->start(500);
        m_controller->pauseTimerNextImage();
        m_controller->resumeTimerNextImage();
        QCOMPARE(m_timer->interval(), 3000);
    }

    void timeout()
    {
        const std::tuple<int, int, QStringList, int> rows[] = {
            {1, VxGlobalObject::NoLoop, {"stop"}, -1},
            {1, VxGlobalObject::LoopAll, {"play"}, -1},
            {1, VxGlobalObject::LoopFile, {"play"}, -1},
            {2, VxGlobalObject::NoLoop, {}, 1},
        };
        for (const auto &[listSize, loopMode, calls, index] : rows) {
            init();
            openList(listSize);
            m_controller->setLoopMode(loopMode);
            // Once only: the real loader starts the time anew with the next picture.
            connect(m_timer, &QTimer::timeout, m_timer, &QTimer::stop);
            m_timer->start(1);
            QTRY_VERIFY(!m_timer->isActive());
            QCOMPARE(m_app->loader.calls, calls);
            QCOMPARE(m_controller->playListIndex(), index);
        }
    }

    // A show of four entries steps once, from the one or the other end.
    void passesOverWhatCannotBeShown()
    {
        using Mode = VxGlobalObject;
        const QByteArray ofAFile =
            "[{\"media\":\"0.jpg\"},{\"media\":\"1.jpg\"},"
            "{\"media\":\"2.jpg\"},{\"media\":\"3.jpg\"}]";
        const QSet<int> all{0, 1, 2, 3};

        enum Step {
            Next,
            Previous,
            ByItself
        };

        // The entries' names come from a playlist file; which cannot be shown; where the show then
        // stands (-1: at its end), and what the user is told.
        const std::tuple<bool, int, Step, QSet<int>, int, QString> rows[] = {
            {true, Mode::LoopAll, Next, {1, 2}, 3, ""},
            {true, Mode::LoopAll, Previous, {3, 2}, 1, ""},
            {true, Mode::LoopFile, ByItself, {0, 1}, 2, ""},
            {true, Mode::NoLoop, ByItself, {1, 2, 3}, -1, ""},
            {true, Mode::LoopAll, Next, all, -1, "None of the 4 files can be shown."},
            {false, Mode::LoopAll, ByItself, {1}, 2, ""},
            {false, Mode::LoopAll, Next, {1}, 1, "bad"},
        };
        for (const auto &[found, loopMode, step, bad, index, message] : rows) {
            init();
            m_controller->setLoopMode(loopMode);
            QTemporaryDir folder;
            QFile file(folder.filePath("list.vspl"));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(ofAFile) > 0 && file.flush());
            if (found)
                m_controller->openFile(file.fileName());
            else
                openList(4);
            QTRY_COMPARE(m_controller->getPlayList().size(), 4);
            m_app->provider->setTextureId(1); // the first one is seen
            QString told;
            m_app->loader.onMedium = [&, bad = bad](const QUrl &url) {
                m_app->provider->setTextureId(0);
                if (bad.contains(url.fileName().leftRef(1).toInt()))
                    told = m_controller->refuse(url, "bad");
                else
                    m_app->provider->setTextureId(1);
            };
            QSignalSpy end(m_controller, &VxGlobalObject::endOfPlaylistReached);
            QSignalSpy passed(m_controller, &VxGlobalObject::passedOver);
            if (step == Previous)
                m_controller->playListSetPrevious();
            else
                m_controller->playListSetNext(step == Next);
            QTRY_VERIFY(!m_controller->isOpening());
            QCOMPARE(told, message);
            QCOMPARE(passed.count(), bad.size() - (message.isEmpty() ? 0 : 1));
            QCOMPARE(end.count(), index < 0 && message.isEmpty() ? 1 : 0);
            if (index >= 0 || !message.isEmpty())
                QCOMPARE(m_controller->playListIndex(), index);
        }
    }

    // What the user asks for while an entry is passed over holds.
    void anotherChoiceWhilePassingOver()
    {
        openList(3);
        m_controller->playListSetNext(false);
        QCOMPARE(m_controller->refuse(QUrl("file:///1.jpg"), "bad"), QString());
        m_controller->openFile("http://host/b.mp4");
        QTRY_VERIFY(!m_controller->isOpening());
        QCoreApplication::processEvents();
        QCOMPARE(m_app->loader.media.last().url, QUrl("http://host/b.mp4"));
    }

private:
    /// Opens a playlist of so many pictures and forgets what that asked of the loader.
    void openList(int size)
    {
        QStringList files;
        for (int i = 0; i < size; ++i)
            files.append(QString("/%1.jpg").arg(i));
        m_controller->openFiles(files);
        QTRY_VERIFY(!m_controller->isOpening());
        m_app->loader.media.clear();
    }

    std::unique_ptr<MediaApplication> m_app;
    VxGlobalObject *m_controller = nullptr;
    QTimer *m_timer = nullptr; // of the next image
};

QTEST_GUILESS_MAIN(TestSlideShow)
#include "tst_slideshow.moc"
