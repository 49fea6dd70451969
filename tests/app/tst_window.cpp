// SPDX-License-Identifier: GPL-3.0-or-later
// The main window and the item that catches dropped files.
#include "RecordingLoader.h"
#include "app/VxDropArea.h"
#include "app/VxQQuickView.h"

#include <QDropEvent>
#include <QMimeData>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <tuple>

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

    void tellsOfItselfAndTheGpu()
    {
        QCOMPARE(m_view->title(), QString("Tavro VR Player 64bits 2.3.1"));
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
        const int side = m_view->maxTextureSize().width();
        QVERIFY(side >= 1024 && m_view->maxTextureSize().height() == side);
        const QRegularExpression text(
            QString("^Renderer : .+ \nOpenGL Version : \\d.+ \nMaximum texture size : %1\n$")
                .arg(side));
        QVERIFY2(text.match(m_view->gpuInfo()).hasMatch(), qPrintable(m_view->gpuInfo()));
        QCOMPARE(infos.count(), 1);
        QCOMPARE(sizes.count(), 1);
        QVERIFY(m_view->fps() >= 1 && m_view->fps() <= 3); // from the first frame on
    }

    void closeAsksTheController()
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

    void mouseMoves()
    {
        const std::tuple<QPointF, Qt::MouseEventSource, QVariantList> rows[] = {
            {{10.5, -2.5}, Qt::MouseEventNotSynthesized, {11, -3}},
            {{10.4, -2.4}, Qt::MouseEventSynthesizedByQt, {10, -2}},
            {{10, 20}, Qt::MouseEventSynthesizedBySystem, {}}, // a touch
        };
        for (const auto &[position, source, told] : rows) {
            QSignalSpy moves(m_view.get(), &VxQQuickView::mouseMoved);
            QMouseEvent event(QEvent::MouseMove, position, position, position, Qt::NoButton,
                              Qt::NoButton, Qt::NoModifier, source);
            QCoreApplication::sendEvent(m_view.get(), &event);
            QCOMPARE(moves.value(0), told);
        }
    }

    void fullScreen()
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

    void drops()
    {
        VxDropArea area;
        area.setParentItem(m_view->contentItem());
        area.setSize(QSizeF(320, 240));
        m_view->show();
        QSignalSpy changed(&area, &VxDropArea::filePathListChanged);
        const auto isWanted = [this](const QMimeData &data) {
            QDragEnterEvent enter({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(m_view.get(), &enter);
            QDropEvent drop({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(m_view.get(), &drop);
            return enter.isAccepted();
        };
        QMimeData data;
        data.setText("a.jpg");
        QVERIFY(!isWanted(data));
        const QList<QUrl> urls{QUrl("file:///a%20%23.jpg"), QUrl("http://h/c")};
        data.setUrls(urls);
        for (int times = 1; times <= 2; ++times) { // the same files again count again
            QVERIFY(isWanted(data));
            QCOMPARE(area.filePathList(), urls);
            QCOMPARE(changed.count(), times);
        }
        // As such only another list is news, be it with equal URLs.
        area.setFilePathList(area.filePathList());
        QCOMPARE(changed.count(), 2);
    }

private:
    std::unique_ptr<FakeApplication> m_app;
    std::unique_ptr<VxQQuickView> m_view;
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
