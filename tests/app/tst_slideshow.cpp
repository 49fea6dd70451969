// SPDX-License-Identifier: GPL-3.0-or-later
// Steps through a playlist and the timer of still images.
#include "RecordingLoader.h"

#include <QSignalSpy>
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
            m_controller->setPlayListIndex(from);
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
        m_controller->setPlayListIndex(0);
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
            m_timer->stop();
            m_app->settingsObject->set("application/playlist/imageDisplayDurationNone", none);
            m_controller->startTimerNextImage();
            QCOMPARE(m_timer->isActive(), !none);
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
