// SPDX-License-Identifier: GPL-3.0-or-later
// The main window, and the interface's files among the real objects that they use.
#include "RecordingLoader.h"
#include "app/VxDropArea.h"
#include "app/VxQQuickView.h"
#include "render/VistrelView.h"
#include "settings/VxSettings.h"
#include "video/VxVideoPlugin.h"

#include <QDir>
#include <QDropEvent>
#include <QImage>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>
#include <tuple>

namespace {

// As the players number their states.
constexpr int kStopped = 0;
constexpr int kPlaying = 1;
constexpr int kPaused = 2;
constexpr int kNoMedia = 1;
constexpr int kLoading = 2;
constexpr int kBuffered = 6;

QStringList warnings;

void noteWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        warnings.append(message);
}

} // namespace

class TestInterface : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        qmlRegisterUncreatableType<VxShaderCodeBuilder>("Vistrel", 1, 0, "VxShaderCodeBuilder", "");
        qmlRegisterType<VxDropArea>("Vistrel", 1, 0, "VxDropArea");
        qmlRegisterType<VistrelView>("Vistrel", 1, 0, "VistrelView");
        VxVideoPlugin::registerQmlTypes();
    }

    void init()
    {
        m_app = std::make_unique<FakeApplication>();
        m_view = std::make_unique<VxQQuickView>(m_app.get());
        m_app->makeObjects(m_view.get());
        QQmlContext *root = m_view->rootContext();
        root->setContextProperty("vxApp", m_app.get());
        root->setContextProperty("vxView", m_view.get());
        root->setContextProperty("vxShaderCodeBuilder", m_app->builder);
        root->setContextProperty("vxGlobalObject", m_app->controller);
        root->setContextProperty("vxTextureProvider", m_app->provider);
        root->setContextProperty("vxSettings", m_app->settingsObject);
        m_videoPlugin = std::make_unique<VxVideoPlugin>(m_app->settingsObject->store());
        root->setContextProperty("vxVideoPlugin", m_videoPlugin.get());
        m_view->resize(320, 240);
        m_view->show();
        QTRY_VERIFY(m_view->maxTextureSize().isValid());
    }

    void cleanup()
    {
        endFrames();
        // Before what their bindings read; what was made first, others were given.
        while (!m_objects.isEmpty())
            delete m_objects.takeLast();
        m_view.reset();
        m_videoPlugin.reset();
        m_app.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void loadsWithoutWarning_data()
    {
        QTest::addColumn<QString>("file");
        const QStringList files = QDir(":/qml").entryList({"*.qml"});
        QVERIFY(files.contains("main_newui.qml"));
        for (const QString &file : files)
            QTest::newRow(qPrintable(file)) << file;
    }

    void loadsWithoutWarning()
    {
        QFETCH(QString, file);
        warnings.clear();
        const QtMessageHandler previous = qInstallMessageHandler(noteWarnings);
        QVariantMap properties;
        const bool needsArea = file == "Vx_Menu.qml" || file == "Vx_DebugInfo.qml";
        if (needsArea || file == "Vx_VideoArea.qml")
            properties["mediaLoader"] = QVariant::fromValue(create("Vx_MediaLoader.qml"));
        if (needsArea)
            properties["videoArea"] = QVariant::fromValue(create("Vx_VideoArea.qml", properties));
        if (file == "Vx_DebugInfo.qml")
            properties = {
                {"mediaPlayer",
                 QVariant::fromValue(player(properties["mediaLoader"].value<QObject *>()))},
                {"view", properties["videoArea"].value<QObject *>()->property("view")}};
        QSignalSpy frames(m_view.get(), &QQuickWindow::frameSwapped);
        QObject *object = create(file, properties);
        // What a file loads on demand, and its first bindings, come with the first frames.
        bool shown = object;
        for (int frame = 0; shown && frame < 3; ++frame) {
            m_view->update();
            shown = QTest::qWaitFor([&] { return frames.count() > frame; });
        }
        endFrames();
        delete object;
        qInstallMessageHandler(previous);
        QVERIFY(shown);
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join('\n')));
    }

    void showsPicture()
    {
        QObject *loader = create("Vx_MediaLoader.qml");
        QVERIFY(loader);
        const QString file = picture("Ä picture #1 100%.png");
        m_app->controller->openFile(file, true);
        const QObject *shown = player(loader);
        QTRY_COMPARE(shown->property("playerStatus").toInt(), kBuffered);
        QTRY_VERIFY(m_app->provider->textureId() > 0);
        QCOMPARE(m_app->provider->textureSize(), QSize(64, 32));
        QTRY_COMPARE(shown->property("fileMetadata").toMap().value("Texture size").toSize(),
                     QSize(64, 32));
        QVERIFY(m_view->QWindow::title().startsWith("Tavro VR Player - file://"));
        QVERIFY(shown->property("logMessage").toString().startsWith("Media : file://"));

        // The time of the slide show runs while the picture plays.
        const QTimer *slideShow = m_app->timer(false);
        QVERIFY(slideShow->isActive());
        QCOMPARE(shown->property("playbackState").toInt(), kPlaying);
        QMetaObject::invokeMethod(loader, "playPause");
        QVERIFY(!slideShow->isActive());
        QCOMPARE(shown->property("playbackState").toInt(), kPaused);
        QMetaObject::invokeMethod(loader, "playPause");
        QVERIFY(slideShow->isActive());

        QMetaObject::invokeMethod(loader, "stop");
        QTRY_COMPARE(shown->property("playerStatus").toInt(), kNoMedia);
        QCOMPARE(shown->property("playbackState").toInt(), kStopped);
        QCOMPARE(m_app->provider->textureId(), 0);
        QVERIFY(!slideShow->isActive());
        QCOMPARE(m_view->QWindow::title(), QString("Tavro VR Player"));
    }

    void failureEmptiesTheView()
    {
        QObject *loader = create("Vx_MediaLoader.qml");
        QVERIFY(loader);
        QSignalSpy messages(loader, SIGNAL(displayMessage(QString, QString)));
        m_app->controller->openFile(picture("good.png"));
        QTRY_VERIFY(m_app->provider->textureId() > 0);
        m_app->controller->openFile("/missing.jpg");
        QTRY_COMPARE(messages.count(), 1);
        const QString message = "An error occurred while loading the image";
        QCOMPARE(messages.first().first().toString(), message);
        QCOMPARE(player(loader)->property("errorString").toString(), message);
        QVERIFY(
            messages.first().last().toString().startsWith("/missing.jpg\nThere is no such file"));
        QCOMPARE(player(loader)->property("mediaSource").toUrl(), QUrl());
        QCOMPARE(m_app->provider->textureId(), 0);

        // A script that insists is told nothing new, and nothing is opened for it.
        const auto insist = [loader](const QString &file) {
            QMetaObject::invokeMethod(
                loader, "processFileSource", Q_ARG(QVariant, QUrl::fromLocalFile(file)),
                Q_ARG(QVariant, true), Q_ARG(QVariant, ""), Q_ARG(QVariant, false));
        };
        for (int times = 0; times < 3; ++times)
            insist("/missing.jpg");
        insist(picture("other.png"));
        QTRY_VERIFY(m_app->provider->textureId() > 0);
        QCOMPARE(messages.count(), 1);
    }

    void otherBackEndIsForTheNextStart()
    {
        QObject *root = create("main_newui.qml");
        QVERIFY(root);
        m_videoPlugin->setCurrentPlugin("gstreamermediaplayer");
        const auto objects = root->findChildren<QObject *>();
        const auto dialog = std::find_if(objects.begin(), objects.end(), [](const QObject *object) {
            return QByteArray(object->metaObject()->className()).startsWith("Vx_MessageDialog");
        });
        QVERIFY(dialog != objects.end());
        QCOMPARE((*dialog)->property("icon").toInt(), int(QMessageBox::Information));
        m_app->controller->openFile("http://localhost:9/a.mp4");
        // What plays is still the one that gives blue for red.
        QVERIFY(m_app->builder->invertedColors());
    }

    void tellsWhatGoesOn()
    {
        QObject *loader = create("Vx_MediaLoader.qml");
        QObject *area = create("Vx_VideoArea.qml", {{"mediaLoader", QVariant::fromValue(loader)}});
        QVERIFY(area);
        const auto shows = [area](const char *type) {
            const auto items = area->findChildren<QQuickItem *>();
            return std::any_of(items.begin(), items.end(), [type](const QQuickItem *item) {
                return QByteArray(item->metaObject()->className()).startsWith(type);
            });
        };
        const auto become = [&](int status) {
            player(loader)->setProperty("playerStatus", status);
        };
        QTRY_VERIFY(shows("Vx_InfoScreen"));
        for (int times = 0; times < 2; ++times) {
            become(kLoading);
            QVERIFY(!shows("Vx_Spinner")); // not at once
            QTRY_VERIFY(shows("Vx_Spinner"));
            QVERIFY(!shows("Vx_InfoScreen"));
            become(kBuffered);
            QTRY_VERIFY(!shows("Vx_Spinner"));
            become(kNoMedia); // as between one medium and the next
            QVERIFY(!shows("Vx_InfoScreen"));
        }
        QTRY_VERIFY(shows("Vx_InfoScreen"));

        // A player that never tells of its medium, and one that only says what is wrong.
        loader->setProperty("mediaPlayer", QVariant::fromValue(idlePlayer()));
        QTRY_VERIFY(shows("Vx_Spinner") && !shows("Vx_InfoScreen"));
        player(loader)->setProperty("errorString", "No service");
        QTRY_VERIFY(shows("Vx_InfoScreen") && !shows("Vx_Spinner"));

        // What ends while the next medium is looked at does not stop the player.
        m_app->controller->openFile("/not there.jpg");
        QVERIFY(m_app->controller->isOpening());
        QMetaObject::invokeMethod(loader, "handleEndOfMedia");
        QVERIFY(m_app->controller->isOpening());
        QMetaObject::invokeMethod(loader, "stop");
        QVERIFY(!m_app->controller->isOpening());
    }

    void catchesWhatIsDropped()
    {
        QObject *root = create("main_newui.qml");
        QVERIFY(root);
        auto *area = root->findChild<VxDropArea *>();
        QSignalSpy changed(area, &VxDropArea::filePathListChanged);
        QMimeData data;
        data.setText("a.jpg");
        QDragEnterEvent enter({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_view.get(), &enter);
        QVERIFY(!enter.isAccepted());
        const QList<QUrl> urls{QUrl("file:///a%20%23.jpg"), QUrl("file:///b.jpg")};
        data.setUrls(urls);
        for (int times = 1; times <= 2; ++times) { // the same files again count again
            QDragMoveEvent move({60, 60}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QDropEvent drop({60, 60}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            for (QDropEvent *event : std::initializer_list<QDropEvent *>{&enter, &move, &drop}) {
                event->ignore();
                QCoreApplication::sendEvent(m_view.get(), event);
                QVERIFY(event->isAccepted());
            }
            QCOMPARE(m_app->controller->getPlayList(), urls);
            QCOMPARE(changed.count(), times);
        }
        area->setFilePathList(area->filePathList());
        QCOMPARE(changed.count(), 2);
    }

    void tellsOfItselfAndTheGpu()
    {
        VxQQuickView view(m_app.get());
        QCOMPARE(view.title(), QString("Tavro VR Player 64bits 2.3.1"));
        QCOMPARE(view.gpuInfo(), QString("Cannot get GPU version"));
        QVERIFY(!view.maxTextureSize().isValid());
        QSignalSpy infos(&view, &VxQQuickView::gpuInfoChanged);
        QSignalSpy frames(&view, &QQuickWindow::frameSwapped);
        view.show();
        for (int frame = 1; frame <= 3; ++frame) {
            QTRY_VERIFY(frames.count() >= frame);
            view.update();
        }
        const int side = view.maxTextureSize().width();
        QVERIFY(side >= 1024 && view.maxTextureSize().height() == side);
        const QRegularExpression text(
            QString("^Renderer : .+ \nOpenGL Version : \\d.+ \nMaximum texture size : %1\n$")
                .arg(side));
        QVERIFY2(text.match(view.gpuInfo()).hasMatch(), qPrintable(view.gpuInfo()));
        QCOMPARE(infos.count(), 1);
        QVERIFY(view.fps() >= 1 && view.fps() <= 3); // from the first frame on
    }

    void fitsTheScreen()
    {
        m_app->settingsObject->set("application/window/width", -5);
        m_app->settingsObject->set("application/window/height", 32767);
        const QObject *root = create("main_newui.qml");
        QVERIFY(root);
        QCOMPARE(root->property("width").toInt(), 640);
        QCOMPARE(root->property("height").toInt(),
                 m_view->screen()->availableVirtualSize().height());
    }

    void closeAsksTheController()
    {
        RecordingLoader loader;
        m_app->controller->setMediaLoader(&loader);
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

private:
    /// A signal that is still on its way from the rendering thread when its sender goes is never
    /// freed.
    void endFrames()
    {
        m_view->hide();
        QCoreApplication::sendPostedEvents();
    }

    /// Makes an object of one of the interface's files; items stand in the window.
    QObject *create(const QString &file, const QVariantMap &properties = {})
    {
        QQmlComponent component(m_view->engine(), QUrl("qrc:/qml/" + file));
        QObject *object = component.createWithInitialProperties(properties, m_view->rootContext());
        if (!object) {
            qWarning("%s", qPrintable(component.errorString()));
            return nullptr;
        }
        m_objects.append(object);
        if (auto *item = qobject_cast<QQuickItem *>(object))
            item->setParentItem(m_view->contentItem());
        return object;
    }

    QObject *player(const QObject *loader) const
    {
        return loader->property("mediaPlayer").value<QObject *>();
    }

    /// A player with a medium and the states that the interface reads, which does nothing.
    QObject *idlePlayer()
    {
        QQmlComponent component(m_view->engine());
        component.setData(
            "import QtQuick 2.15\nItem { property int playerStatus: 1\n"
            "property url mediaSource: 'file:///a.mp4'\nproperty string errorString\n"
            "property string logMessage\nproperty var fileMetadata\n"
            "property Item shaderEffectSource\nproperty int textureId\n"
            "function stop() {} }",
            QUrl());
        m_objects.append(component.create(m_view->rootContext()));
        return m_objects.last();
    }

    QString picture(const QString &name)
    {
        QImage image(64, 32, QImage::Format_RGB32);
        image.fill(Qt::blue);
        return image.save(m_folder.filePath(name)) ? m_folder.filePath(name) : QString();
    }

    std::unique_ptr<FakeApplication> m_app;
    std::unique_ptr<VxVideoPlugin> m_videoPlugin;
    std::unique_ptr<VxQQuickView> m_view;
    QList<QPointer<QObject>> m_objects; // of the interface
    QTemporaryDir m_folder;
};

QTEST_MAIN(TestInterface)
#include "tst_interface.moc"
