// SPDX-License-Identifier: GPL-3.0-or-later
// The texture of a scene's item, as the renderers get it.
#include "RenderThread.h"
#include "render/VxTextureProvider.h"
#include "tests/common/FakeContext.h"

#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickView>
#include <QSGTextureProvider>
#include <QSignalSpy>

#include <memory>

namespace {

// A picture of four quarters, one of them empty, behind a texture source; and something that moves
// all the time, so that the window shows frame after frame.
constexpr char kScene[] = R"(
import QtQuick 2.15
Item {
    property alias source: effect
    property alias picture: picture
    property color corner: "red"
    width: 200; height: 100
    Rectangle {
        width: 5; height: 5
        NumberAnimation on x { from: 0; to: 100; duration: 1000; loops: Animation.Infinite }
    }
    Item {
        id: picture
        width: 40; height: 20
        Rectangle { width: parent.width / 2; height: parent.height / 2; color: corner }
        Rectangle { x: parent.width / 2; width: parent.width / 2; height: parent.height / 2; color: "lime" }
        Rectangle { y: parent.height / 2; width: parent.width / 2; height: parent.height / 2; color: "blue" }
    }
    ShaderEffectSource {
        id: effect
        width: 1; height: 1
        sourceItem: picture
        hideSource: true
        wrapMode: ShaderEffectSource.ClampToEdge
    }
})";

} // namespace

/// A player that draws into a texture of one id.
class FramePlayer : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void frameDisplayed();
};

class TestTextureProvider : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_view = std::make_unique<QQuickView>();
        auto *component = new QQmlComponent(m_view->engine(), m_view.get());
        component->setData(kScene, QUrl("qrc:/scene.qml"));
        m_view->setContent(component->url(), component, component->create());
        QVERIFY(m_view->rootObject());
        m_source = m_view->rootObject()->property("source").value<QQuickItem *>();
        m_picture = m_view->rootObject()->property("picture").value<QQuickItem *>();
        m_frames = std::make_unique<RenderThread::FrameCounter>(*m_view);
        m_view->show();
        QVERIFY(m_frames->wait(2));
        m_context.windowObject = m_view.get();
        makeProvider(true);
    }

    void cleanup()
    {
        m_frames.reset();
        m_view.reset();
        m_provider.reset();
    }

    void tellsOfChanges()
    {
        m_provider->setTextureId(7);
        m_provider->setTextureId(7);
        QCOMPARE(m_changes.load(), 1);

        FramePlayer player;
        m_provider->watchFrames(nullptr);
        m_provider->watchFrames(&player);
        m_provider->watchFrames(&player);
        Q_EMIT player.frameDisplayed();
        QCOMPARE(m_changes.load(), 2);
    }

    void arrivesInItsFrame_data()
    {
        QTest::addColumn<bool>("drawnBefore");
        QTest::newRow("picture that comes later") << false;
        QTest::newRow("picture that is there already") << true;
    }

    // The scene graph tells of a change before it draws the texture. Waiting for the next tick of
    // the timer instead would take a second, some sixty frames.
    void arrivesInItsFrame()
    {
        QFETCH(bool, drawnBefore);
        if (!drawnBefore) {
            m_picture->setSize(QSizeF(0, 0));
            QVERIFY(m_frames->wait(2));
        }
        m_provider->setShaderEffectSource(m_source, true);
        if (!drawnBefore) {
            QVERIFY(m_frames->wait(5));
            m_picture->setSize(QSizeF(40, 20));
        }
        const int begin = m_frames->count();
        // On the thread that writes it, or the count of frames runs on.
        std::atomic_int arrival{0};
        const QObject listener;
        connect(
            m_provider.get(), &VxTextureProvider::textureIdChanged, &listener,
            [&] { arrival = m_frames->count(); }, Qt::DirectConnection);
        QTRY_VERIFY(arrival > 0);
        QVERIFY2(arrival - begin <= 2, qPrintable(QString::number(arrival - begin)));
        QVERIFY(m_provider->textureId() > 0);
        QCOMPARE(m_provider->textureSize(), QSize(40, 20));
    }

    void picture_data()
    {
        QTest::addColumn<bool>("copyTexture");
        QTest::addColumn<bool>("isImage");
        QTest::newRow("still image") << true << true;
        QTest::newRow("moving picture") << true << false;
        QTest::newRow("layer of the interface") << false << false;
    }

    void picture()
    {
        QFETCH(bool, copyTexture);
        QFETCH(bool, isImage);
        makeProvider(copyTexture);
        QSignalSpy sizes(m_provider.get(), &VxTextureProvider::textureSizeChanged);
        m_provider->setShaderEffectSource(m_source, isImage);
        QVERIFY(m_frames->wait(3));
        // A moving picture is taken when it tells of its next frame.
        for (const char *color : {"yellow", "cyan"}) {
            const int before = m_changes;
            setCorner(color);
            QVERIFY(m_frames->wait(3));
            QVERIFY(m_changes > before || !copyTexture);
            QVERIFY(!isImage || holdsPicture(color));
        }
        // At rest nothing is told, after a last look at what moved.
        QTest::qWait(isImage ? 0 : 1200);
        const int still = m_changes;
        QTest::qWait(1200);
        QCOMPARE(m_changes.load(), still);
        QTRY_VERIFY(holdsPicture("cyan"));
        int ownId = 0;
        RenderThread::run(*m_view, [&](QOpenGLFunctions *) {
            ownId = m_source->textureProvider()->texture()->textureId();
        });
        QCOMPARE(m_provider->textureId() != ownId, copyTexture && !isImage);
        for (const QSize &size : {QSize(60, 30), QSize(16, 8)}) {
            m_picture->setSize(size);
            QTRY_COMPARE(m_provider->textureSize(), size);
            QTRY_VERIFY(holdsPicture("cyan"));
        }
        QTRY_COMPARE(sizes.count(), 3);
    }

    void nothingToWatch()
    {
        m_provider->setShaderEffectSource(m_source, true);
        QVERIFY(waitForTexture());
        m_provider->setShaderEffectSource(nullptr);
        m_provider->setTextureId(0);
        QTest::qWait(1200); // the timer ticks on
        QCOMPARE(m_provider->textureId(), 0);

        m_provider->setShaderEffectSource(m_source, true);
        QVERIFY(waitForTexture()); // of a picture that was drawn before
        delete m_source;
        const int id = m_provider->textureId();
        QTest::qWait(1200);
        QCOMPARE(m_provider->textureId(), id);
        m_provider.reset(); // before the window, which goes on
        QVERIFY(m_frames->wait(5));
    }

    // As when the timer fires while the window goes. A small picture shares a texture with others,
    // which nobody has uploaded where it is not drawn itself.
    void tickWithoutContext()
    {
        QQmlComponent component(m_view->engine());
        component.setData(
            "import QtQuick 2.15\n"
            "ShaderEffectSource { hideSource: true; visible: false; sourceItem: Image {\n"
            "  source: 'data:image/svg+xml,<svg width=\"8\" height=\"8\"/>' } }",
            QUrl());
        auto *effect = qobject_cast<QQuickItem *>(component.create());
        QVERIFY(effect);
        effect->setParent(m_view->rootObject());
        for (QQuickItem *item : {effect, effect->property("sourceItem").value<QQuickItem *>()})
            item->setParentItem(m_view->rootObject());
        m_provider->setShaderEffectSource(effect, true);
        QVERIFY(waitForTexture());
        QVERIFY(QMetaObject::invokeMethod(m_provider.get(), "onQsgTextureChanged"));
    }

    void newSceneGraph_data() { picture_data(); }

    void newSceneGraph()
    {
        QFETCH(bool, isImage);
        if (RenderThread::noNewSceneGraph())
            QSKIP(RenderThread::noNewSceneGraph());
        m_provider->setShaderEffectSource(m_source, isImage);
        QVERIFY(m_frames->wait(3));
        setCorner("cyan");
        QVERIFY(waitForTexture());

        QVERIFY(RenderThread::hideWithSceneGraph(*m_view));
        QCOMPARE(m_provider->textureId(), 0);
        m_view->show();
        QVERIFY(m_frames->wait(3));
        setCorner("yellow");
        QVERIFY(waitForTexture());
        QTRY_VERIFY(holdsPicture("yellow"));
    }

private:
    void makeProvider(bool copyTexture)
    {
        m_provider = std::make_unique<VxTextureProvider>(&m_context, copyTexture, false);
        m_changes = 0;
        connect(
            m_provider.get(), &VxTextureProvider::contentChanged, this, [this] { ++m_changes; },
            Qt::DirectConnection);
    }

    void setCorner(const QColor &color) { m_view->rootObject()->setProperty("corner", color); }

    bool waitForTexture() const
    {
        return QTest::qWaitFor([this] { return m_provider->textureId() > 0; });
    }

    /// Whether the texture holds the picture, with this colour in its first quarter.
    bool holdsPicture(const QColor &corner)
    {
        const QSize size = m_provider->textureSize();
        const QImage image = RenderThread::download(*m_view, GLuint(m_provider->textureId()), size);
        const int x = size.width() - 3;
        const int y = size.height() - 3;
        return image.pixelColor(2, 2) == corner && image.pixelColor(x, 2) == QColor("lime")
            && image.pixelColor(2, y) == QColor("blue") && image.pixelColor(x, y).alpha() == 0;
    }

    FakeContext m_context;
    std::unique_ptr<QQuickView> m_view;
    std::unique_ptr<RenderThread::FrameCounter> m_frames;
    std::unique_ptr<VxTextureProvider> m_provider;
    std::atomic_int m_changes{0}; // that it has told
    QQuickItem *m_source = nullptr;
    QQuickItem *m_picture = nullptr; // what that draws
};

QTEST_MAIN(TestTextureProvider)
#include "tst_textureprovider.moc"
