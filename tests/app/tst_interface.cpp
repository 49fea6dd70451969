// SPDX-License-Identifier: GPL-3.0-or-later
// The interface's files among the real objects that they use: each loads without a warning, and
// the media loader says what is wrong with a medium.
#include "app/VxDropArea.h"
#include "app/VxQQuickView.h"
#include "render/VistrelView.h"
#include "settings/VxSettings.h"
#include "tests/common/FakeApplication.h"
#include "video/VxVideoPlugin.h"

#include <QDir>
#include <QImage>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

// As the players number their states.
constexpr int kStopped = 0;
constexpr int kPlaying = 1;
constexpr int kPaused = 2;
constexpr int kNoMedia = 1;
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
        // A signal that is still on its way from the rendering thread when its sender goes is never
        // freed.
        m_view->hide();
        QCoreApplication::sendPostedEvents();
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
        if (file == "Vx_VideoArea.qml" || file == "Vx_Menu.qml")
            properties["mediaLoader"] = QVariant::fromValue(create("Vx_MediaLoader.qml"));
        if (file == "Vx_DebugInfo.qml") {
            QObject *loader = create("Vx_MediaLoader.qml");
            QObject *area =
                create("Vx_VideoArea.qml", {{"mediaLoader", QVariant::fromValue(loader)}});
            properties["mediaPlayer"] = loader->property("mediaPlayer");
            properties["view"] = area->property("view");
        }
        if (file == "Vx_Menu.qml")
            properties["videoArea"] = QVariant::fromValue(create("Vx_VideoArea.qml", properties));
        QSignalSpy frames(m_view.get(), &QQuickWindow::frameSwapped);
        QObject *object = create(file, properties);
        // What a file loads on demand, and its first bindings, come with the first frames.
        bool shown = object;
        for (int frame = 0; shown && frame < 3; ++frame) {
            m_view->update();
            shown = QTest::qWaitFor([&] { return frames.count() > frame; });
        }
        delete object;
        qInstallMessageHandler(previous);
        QVERIFY(shown);
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join('\n')));
    }

    void showsPicture()
    {
        QObject *loader = create("Vx_MediaLoader.qml");
        QVERIFY(loader);
        QSignalSpy states(loader, SIGNAL(changeRootState(QString)));
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
        QCOMPARE(states.count(), 1);
        QCOMPARE(states.first(), QVariantList{"Video"});

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

    // By each of the roads on which a medium fails: its suffix, its playlist, its look.
    void saysWhatIsWrong()
    {
        QObject *loader = create("Vx_MediaLoader.qml");
        QVERIFY(loader);
        const QObject *shown = player(loader);
        const std::pair<const char *, const char *> rows[] = {
            {"letter.txt", "The file format is not supported."},
            {"list.vspl", "Error : cannot open file .vspl"},
            {"missing.jpg", "An error occurred while loading the image"},
        };
        for (const auto &[name, message] : rows) {
            QSignalSpy messages(loader, SIGNAL(displayMessage(QString)));
            m_app->controller->openFile(picture("good.png"));
            QTRY_VERIFY(m_app->provider->textureId() > 0);
            m_app->controller->openFile(m_folder.filePath(name));
            QTRY_COMPARE(messages.count(), 1);
            QCOMPARE(messages.first().first().toString(), QString(message));
            QCOMPARE(shown->property("mediaSource").toUrl(), QUrl());
            QCOMPARE(shown->property("errorString").toString(), QString(message));
            QCOMPARE(m_app->provider->textureId(), 0);
            QTRY_COMPARE(shown->property("playerStatus").toInt(), kNoMedia);

            m_app->controller->openFile(picture("good.png"));
            QTRY_VERIFY(m_app->provider->textureId() > 0);
            QCOMPARE(messages.count(), 1);
            QCOMPARE(shown->property("errorString").toString(), QString());
        }
    }

private:
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
