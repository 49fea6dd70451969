// SPDX-License-Identifier: GPL-3.0-or-later
// The interface's files among the real objects that they use: each loads without a warning, and
// the media loader says what is wrong with a medium.
#include "RecordingLoader.h"
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
#include <QQmlExpression>
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

    void initTestCase();
    void init();
    void cleanup();
    void loadsWithoutWarning_data();
    void loadsWithoutWarning();
    void opensLists_data();
    void opensLists();
    void showsPicture();
    void saysWhatIsWrong_data();
    void saysWhatIsWrong();

private:
    /// Makes an object of one of the interface's files; items stand in the window.
    QObject *create(const QString &file, const QVariantMap &properties = {});

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

void TestInterface::initTestCase()
{
    qmlRegisterUncreatableType<VxShaderCodeBuilder>("Vistrel", 1, 0, "VxShaderCodeBuilder", "");
    qmlRegisterType<VxDropArea>("Vistrel", 1, 0, "VxDropArea");
    qmlRegisterType<VistrelView>("Vistrel", 1, 0, "VistrelView");
    VxVideoPlugin::registerQmlTypes();
}

void TestInterface::init()
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

void TestInterface::cleanup()
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

QObject *TestInterface::create(const QString &file, const QVariantMap &properties)
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

void TestInterface::loadsWithoutWarning_data()
{
    QTest::addColumn<QString>("file");
    const QStringList files = QDir(":/qml").entryList({"*.qml"});
    QVERIFY(files.contains("main_newui.qml"));
    for (const QString &file : files)
        QTest::newRow(qPrintable(file)) << file;
}

void TestInterface::loadsWithoutWarning()
{
    QFETCH(QString, file);
    warnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler(noteWarnings);
    QVariantMap properties;
    if (file == "Vx_VideoArea.qml" || file == "Vx_Menu.qml")
        properties["mediaLoader"] = QVariant::fromValue(create("Vx_MediaLoader.qml"));
    if (file == "Vx_DebugInfo.qml") {
        QObject *loader = create("Vx_MediaLoader.qml");
        QObject *area = create("Vx_VideoArea.qml", {{"mediaLoader", QVariant::fromValue(loader)}});
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

void TestInterface::opensLists_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QList<QUrl>>("media");
    const QList<QUrl> two{QUrl("file:///a%20%23.jpg"), QUrl("file:///b.jpg")};
    QTest::newRow("dropped URLs") << "vxGlobalObject.openFiles(dropped.filePathList, true)" << two;
    QTest::newRow("URLs as texts")
        << "vxGlobalObject.openFiles(['file:///a%20%23.jpg', 'file:///b.jpg'], true)" << two;
    QTest::newRow("paths") << "vxGlobalObject.openFiles(['/a #.jpg', '/b.jpg'], true)" << two;
    QTest::newRow("one path") << "vxGlobalObject.openFile('/a #.jpg', true)" << two.mid(0, 1);
}

void TestInterface::opensLists()
{
    QFETCH(QString, call);
    QFETCH(QList<QUrl>, media);
    RecordingLoader loader;
    m_app->controller->setMediaLoader(&loader);
    VxDropArea area;
    area.setFilePathList(media);
    m_view->rootContext()->setContextProperty("dropped", &area);
    QQmlExpression expression(m_view->rootContext(), nullptr, call);
    expression.evaluate();
    QVERIFY2(!expression.hasError(), qPrintable(expression.error().toString()));
    QCOMPARE(loader.media.size(), 1);
    QCOMPARE(loader.media.first().url, media.first());
    QVERIFY(loader.media.first().dragAndDrop);
    QCOMPARE(m_app->controller->getPlayList(), media.size() > 1 ? media : QList<QUrl>());
}

void TestInterface::showsPicture()
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
    QTimer *slideShow = nullptr;
    const auto timers = m_app->controller->findChildren<QTimer *>();
    for (QTimer *timer : timers)
        slideShow = timer->isSingleShot() ? slideShow : timer;
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

void TestInterface::saysWhatIsWrong_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    const QString image = "An error occurred while loading the image";
    QTest::newRow("missing") << "missing.jpg" << QByteArray() << image;
    QTest::newRow("a text") << "text.jpg" << QByteArray("Dear reader") << image;
    QTest::newRow("a cut picture") << "cut.png" << QByteArray("\x89PNG\r\n\x1a\n", 8) << image;
    QTest::newRow("another format")
        << "letter.txt" << QByteArray("Dear reader") << "The file format is not supported.";
    QTest::newRow("broken playlist")
        << "list.vspl" << QByteArray("[") << "Error : cannot parse json";
}

void TestInterface::saysWhatIsWrong()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QFile file(m_folder.filePath(name));
    if (!content.isEmpty()) {
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
        file.close();
    }
    QObject *loader = create("Vx_MediaLoader.qml");
    QVERIFY(loader);
    QSignalSpy messages(loader, SIGNAL(displayMessage(QString)));
    m_app->controller->openFile(picture("good.png"));
    QTRY_VERIFY(m_app->provider->textureId() > 0);

    m_app->controller->openFile(file.fileName());
    QTRY_COMPARE(messages.count(), 1);
    QCOMPARE(messages.first().first().toString(), message);
    const QObject *shown = player(loader);
    QCOMPARE(shown->property("mediaSource").toUrl(), QUrl());
    QCOMPARE(shown->property("errorString").toString(), message);
    QCOMPARE(m_app->provider->textureId(), 0);
    QTRY_COMPARE(shown->property("playerStatus").toInt(), kNoMedia);

    m_app->controller->openFile(picture("good.png"));
    QTRY_VERIFY(m_app->provider->textureId() > 0);
    QCOMPARE(messages.count(), 1);
    QCOMPARE(shown->property("errorString").toString(), QString());
}

QTEST_MAIN(TestInterface)
#include "tst_interface.moc"
