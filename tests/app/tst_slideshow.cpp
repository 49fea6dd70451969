// SPDX-License-Identifier: GPL-3.0-or-later
// Steps through a playlist and the timer of still images.
#include "RecordingLoader.h"
#include "tests/common/FakeApplication.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

class TestSlideShow : public QObject
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
        m_timer = nullptr;
        const auto timers = m_controller->findChildren<QTimer *>();
        for (QTimer *timer : timers) {
            if (!timer->isSingleShot())
                m_timer = timer;
        }
        QVERIFY(m_timer);
    }

    void steps_data();
    void steps();
    void sameIndexIsNoStep();
    void indexBeyondTheListShowsNothing();
    void displayTime_data();
    void displayTime();
    void nextMediumEndsTheTime();
    void pause();
    void noTimeout();
    void timeout_data();
    void timeout();

private:
    /// Opens a playlist of so many pictures and forgets what that asked of the loader.
    void openList(int size)
    {
        QStringList files;
        for (int i = 0; i < size; ++i)
            files.append(QString("/%1.jpg").arg(i));
        m_controller->openFiles(files);
        m_loader->media.clear();
    }

    std::unique_ptr<FakeApplication> m_app;
    std::unique_ptr<RecordingLoader> m_loader;
    VxGlobalObject *m_controller = nullptr;
    QTimer *m_timer = nullptr; // of the next image
};

void TestSlideShow::steps_data()
{
    QTest::addColumn<int>("loopMode");
    QTest::addColumn<int>("from");
    QTest::addColumn<QString>("step");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("shown"); // -1: nothing is shown anew
    QTest::addColumn<bool>("ends");
    for (int mode : {0, 1, 2}) {
        const auto row = [mode](const char *name) -> QTestData & {
            return QTest::addRow("loop mode %d: %s", mode, name) << mode;
        };
        row("next") << 0 << "next" << 1 << 1 << false;
        row("next after the last") << 2 << "next" << 0 << 0 << false;
        row("previous") << 2 << "previous" << 1 << 1 << false;
        row("previous before the first") << 0 << "previous" << 2 << 2 << false;
    }
    QTest::newRow("no loop: a medium ends") << 0 << 0 << "end" << 1 << 1 << false;
    QTest::newRow("no loop: the last ends") << 0 << 2 << "end" << 2 << -1 << true;
    QTest::newRow("loop all: the last ends") << 1 << 2 << "end" << 0 << 0 << false;
    QTest::newRow("loop file: a medium ends") << 2 << 1 << "end" << 1 << 1 << false;
}

void TestSlideShow::steps()
{
    QFETCH(int, loopMode);
    QFETCH(int, from);
    QFETCH(QString, step);
    QFETCH(int, shown);
    openList(3);
    m_controller->setLoopMode(loopMode);
    m_controller->setPlayListIndex(from);
    m_loader->media.clear();
    QSignalSpy end(m_controller, &VxGlobalObject::endOfPlaylistReached);
    if (step == "previous")
        m_controller->playListSetPrevious();
    else
        m_controller->playListSetNext(step == "next");
    QTEST(m_controller->playListIndex(), "index");
    QCOMPARE(m_loader->media.size(), shown < 0 ? 0 : 1);
    if (shown >= 0)
        QCOMPARE(m_loader->media.first().url, m_controller->getPlayList().at(shown));
    QTEST(end.count() == 1, "ends");
}

void TestSlideShow::sameIndexIsNoStep()
{
    openList(3);
    QSignalSpy changed(m_controller, &VxGlobalObject::playListIndexChanged);
    m_controller->setPlayListIndex(0);
    QCOMPARE(changed.count(), 0);
    QVERIFY(m_loader->media.isEmpty());
    m_controller->setProperty("playListIndex", 2);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m_loader->media.size(), 1);

    m_controller->clearPlayList();
    QCOMPARE(changed.count(), 2);
    m_controller->playListSetNext();
    m_controller->playListSetPrevious();
    QCOMPARE(m_controller->playListIndex(), -1);
    QCOMPARE(m_loader->media.size(), 1);
}

void TestSlideShow::indexBeyondTheListShowsNothing()
{
    openList(3);
    m_controller->setPlayListIndex(7);
    m_controller->setLoopMode(VxGlobalObject::LoopFile);
    QVERIFY(m_loader->media.isEmpty());
    m_controller->playListSetNext();
    QCOMPARE(m_controller->playListIndex(), 2);
}

void TestSlideShow::displayTime_data()
{
    QTest::addColumn<QVariant>("seconds");
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("default") << QVariant() << 30000;
    QTest::newRow("chosen") << QVariant(7) << 7000;
    QTest::newRow("negative") << QVariant(-7) << 1000;
    QTest::newRow("more than the timer can count") << QVariant(99999999) << 2147483000;
}

void TestSlideShow::displayTime()
{
    QFETCH(QVariant, seconds);
    if (seconds.isValid())
        m_app->settingsObject->set("application/playlist/imageDisplayDuration", seconds);
    m_controller->startTimerNextImage();
    QVERIFY(m_timer->isActive());
    QTEST(m_timer->interval(), "milliseconds");
}

void TestSlideShow::nextMediumEndsTheTime()
{
    openList(3);
    m_controller->startTimerNextImage();
    m_controller->playListSetNext();
    QVERIFY(!m_timer->isActive());
    m_controller->startTimerNextImage();
    m_controller->openFile("/other.jpg");
    QVERIFY(!m_timer->isActive());
}

void TestSlideShow::pause()
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

void TestSlideShow::noTimeout()
{
    m_app->settingsObject->set("application/playlist/imageDisplayDurationNone", true);
    m_controller->startTimerNextImage();
    QVERIFY(!m_timer->isActive());
    m_app->settingsObject->set("application/playlist/imageDisplayDurationNone", false);
    m_controller->startTimerNextImage();
    QVERIFY(m_timer->isActive());
}

void TestSlideShow::timeout_data()
{
    QTest::addColumn<int>("listSize");
    QTest::addColumn<int>("loopMode");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<int>("index");
    QTest::newRow("single picture") << 1 << 0 << QStringList{"stop"} << -1;
    QTest::newRow("single picture, loop all") << 1 << 1 << QStringList{"play"} << -1;
    QTest::newRow("single picture, loop file") << 1 << 2 << QStringList{"play"} << -1;
    QTest::newRow("playlist") << 2 << 0 << QStringList() << 1;
}

void TestSlideShow::timeout()
{
    QFETCH(int, listSize);
    QFETCH(int, loopMode);
    QFETCH(QStringList, calls);
    QFETCH(int, index);
    openList(listSize);
    m_controller->setLoopMode(loopMode);
    m_app->settingsObject->set("application/playlist/imageDisplayDuration", 0);
    m_controller->startTimerNextImage();
    // Once only: the real loader starts the time anew with the next picture.
    connect(m_timer, &QTimer::timeout, m_timer, &QTimer::stop);
    QTRY_VERIFY(!m_timer->isActive());
    QCOMPARE(m_loader->calls, calls);
    QCOMPARE(m_controller->playListIndex(), index);
}

QTEST_GUILESS_MAIN(TestSlideShow)
#include "tst_slideshow.moc"
