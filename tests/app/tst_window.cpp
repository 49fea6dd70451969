// SPDX-License-Identifier: GPL-3.0-or-later
// The main window and the item that catches dropped files.
#include "RecordingLoader.h"
#include "app/VxDropArea.h"
#include "app/VxQQuickView.h"
#include "tests/common/FakeApplication.h"

#include <QDropEvent>
#include <QMimeData>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <memory>

Q_DECLARE_METATYPE(Qt::MouseEventSource)

class TestWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_app = std::make_unique<FakeApplication>();
        m_view = std::make_unique<VxQQuickView>(m_app.get());
        m_app->makeObjects(m_view.get());
        m_view->resize(320, 240);
    }

    void cleanup()
    {
        m_view.reset();
        m_app.reset();
    }

    void titles_data();
    void titles();
    void tellsOfTheGpuOnce();
    void countsFrames();
    void closeAsksTheController();
    void mouseMoves_data();
    void mouseMoves();
    void fullScreen();
    void drops_data();
    void drops();
    void droppedAgain();
    void listIsTheSameOrEqual();

private:
    std::unique_ptr<FakeApplication> m_app;
    std::unique_ptr<VxQQuickView> m_view;
};

void TestWindow::titles_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("title");
    QTest::newRow("nothing") << ""
                             << "Tavro VR Player";
    QTest::newRow("a file") << "file:///a b.jpg"
                            << "Tavro VR Player - file:///a b.jpg";
    QTest::newRow("per cent signs") << "file:///%1%2.jpg"
                                    << "Tavro VR Player - file:///%1%2.jpg";
}

void TestWindow::titles()
{
    QFETCH(QString, source);
    m_view->updateTitle(source);
    QTEST(m_view->QWindow::title(), "title");
    // The same word names the product in the interface.
    QCOMPARE(m_view->title(), QString("Tavro VR Player 64bits 2.3.1"));
}

void TestWindow::tellsOfTheGpuOnce()
{
    QCOMPARE(m_view->gpuInfo(), QString("Cannot get GPU version"));
    QVERIFY(!m_view->maxTextureSize().isValid());
    QSignalSpy infos(m_view.get(), &VxQQuickView::gpuInfoChanged);
    QSignalSpy sizes(m_view.get(), &VxQQuickView::maxTextureSizeChanged);
    QSignalSpy frames(m_view.get(), &QQuickWindow::frameSwapped);
    m_view->show();
    for (int frame = 1; frame <= 3; ++frame) {
        QTRY_VERIFY(frames.count() >= frame);
        m_view->update();
    }
    const QSize size = m_view->maxTextureSize();
    QVERIFY(size.width() >= 1024);
    QCOMPARE(size.width(), size.height());
    const QRegularExpression text(
        QString("^Renderer : .+ \nOpenGL Version : \\d.+ \nMaximum texture size : %1\n$")
            .arg(size.width()));
    QVERIFY2(text.match(m_view->gpuInfo()).hasMatch(), qPrintable(m_view->gpuInfo()));
    QCOMPARE(infos.count(), 1);
    QCOMPARE(sizes.count(), 1);
}

void TestWindow::countsFrames()
{
    int frames = 0;
    int lastFrames = 0;
    QVector<int> told;
    QVector<int> counted;
    // On the rendering thread, where each frame is counted.
    connect(
        m_view.get(), &QQuickWindow::afterRendering, m_view.get(), [&] { ++frames; },
        Qt::DirectConnection);
    connect(
        m_view.get(), &VxQQuickView::fpsChanged, m_view.get(),
        [&] {
            told.append(m_view->fps());
            counted.append(frames - lastFrames);
            lastFrames = frames;
        },
        Qt::DirectConnection);
    connect(m_view.get(), &QQuickWindow::frameSwapped, m_view.get(), &QQuickWindow::update);
    m_view->show();
    QTest::qWait(2200);
    m_view->hide();
    // The first frame begins the count, before this slot has seen it.
    QVERIFY(told.size() >= 3);
    QCOMPARE(told.first(), 1);
    for (int i = 1; i < told.size(); ++i)
        QVERIFY(qAbs(told[i] - counted[i]) <= 1);
}

void TestWindow::closeAsksTheController()
{
    RecordingLoader loader;
    m_app->controller->setMediaLoader(&loader);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    QTimer::singleShot(0, m_view.get(), &QWindow::close);
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(loader.calls, QStringList{"destroyVideoPlayer"});
    QVERIFY(m_view->isVisible());
}

void TestWindow::mouseMoves_data()
{
    QTest::addColumn<QPointF>("position");
    QTest::addColumn<Qt::MouseEventSource>("source");
    QTest::addColumn<QVariantList>("told");
    const auto mouse = Qt::MouseEventNotSynthesized;
    QTest::newRow("whole") << QPointF(10, 20) << mouse << QVariantList{10, 20};
    QTest::newRow("half away from zero") << QPointF(10.5, -2.5) << mouse << QVariantList{11, -3};
    QTest::newRow("less than half") << QPointF(10.4, -2.4) << mouse << QVariantList{10, -2};
    QTest::newRow("a touch") << QPointF(10, 20) << Qt::MouseEventSynthesizedBySystem
                             << QVariantList{};
    QTest::newRow("made by the toolkit")
        << QPointF(10, 20) << Qt::MouseEventSynthesizedByQt << QVariantList{10, 20};
}

void TestWindow::mouseMoves()
{
    QFETCH(QPointF, position);
    QFETCH(Qt::MouseEventSource, source);
    QFETCH(QVariantList, told);
    QSignalSpy moves(m_view.get(), &VxQQuickView::mouseMoved);
    QMouseEvent event(QEvent::MouseMove, position, position, position, Qt::NoButton, Qt::NoButton,
                      Qt::NoModifier, source);
    QCoreApplication::sendEvent(m_view.get(), &event);
    QCOMPARE(moves.count(), told.isEmpty() ? 0 : 1);
    if (!told.isEmpty())
        QCOMPARE(moves.first(), told);
}

void TestWindow::fullScreen()
{
    QSignalSpy changed(m_view.get(), &VxQQuickView::fullScreenChanged);
    m_view->show();
    QVERIFY(!m_view->isFullScreen());
    m_view->fullScreenMode(true);
    QTRY_VERIFY(m_view->isFullScreen());
    m_view->fullScreenMode(false);
    QTRY_VERIFY(!m_view->isFullScreen());
    m_view->showMaximized();
    QCOMPARE(changed.count(), 2);
}

void TestWindow::drops_data()
{
    QTest::addColumn<QList<QUrl>>("urls");
    QTest::addColumn<QString>("text");
    QTest::newRow("one file") << QList<QUrl>{QUrl("file:///a%20%23.jpg")} << "";
    QTest::newRow("several") << QList<QUrl>{QUrl("file:///b.jpg"), QUrl("http://h/c")} << "";
    QTest::newRow("text") << QList<QUrl>() << "a.jpg";
}

void TestWindow::drops()
{
    QFETCH(QList<QUrl>, urls);
    QFETCH(QString, text);
    VxDropArea area;
    area.setParentItem(m_view->contentItem());
    area.setSize(QSizeF(320, 240));
    m_view->show();
    QSignalSpy changed(&area, &VxDropArea::filePathListChanged);
    QMimeData data;
    if (urls.isEmpty())
        data.setText(text);
    else
        data.setUrls(urls);
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view.get(), &enter);
    QCOMPARE(enter.isAccepted(), !urls.isEmpty());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view.get(), &drop);
    QCOMPARE(area.filePathList(), urls);
    QCOMPARE(changed.count(), urls.isEmpty() ? 0 : 1);
}

void TestWindow::droppedAgain()
{
    VxDropArea area;
    area.setParentItem(m_view->contentItem());
    area.setSize(QSizeF(320, 240));
    m_view->show();
    QSignalSpy changed(&area, &VxDropArea::filePathListChanged);
    QMimeData data;
    data.setUrls({QUrl("file:///a.jpg")});
    for (int times = 1; times <= 2; ++times) {
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton,
                              Qt::NoModifier);
        QCoreApplication::sendEvent(m_view.get(), &enter);
        QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_view.get(), &drop);
        QCOMPARE(changed.count(), times);
    }
}

void TestWindow::listIsTheSameOrEqual()
{
    VxDropArea area;
    QSignalSpy changed(&area, &VxDropArea::filePathListChanged);
    const QList<QUrl> list{QUrl("file:///a.jpg")};
    area.setFilePathList(list);
    area.setFilePathList(list);
    QCOMPARE(changed.count(), 1);
    area.setFilePathList({QUrl("file:///a.jpg")});
    QCOMPARE(changed.count(), 2);
}

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
