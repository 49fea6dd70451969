// SPDX-License-Identifier: GPL-3.0-or-later
// The panorama item in a window: its picture is always that of the present state, and where nothing
// changes there are no frames.
#include "FakeInterface.h"
#include "RenderThread.h"
#include "app/CameraMath.h"
#include "render/VistrelView.h"
#include "tests/common/FakeApplication.h"
#include "tests/common/PanoramaReference.h"

#include <QLoggingCategory>
#include <QOpenGLShaderProgram>

#include <memory>

using Builder = VxShaderCodeBuilder;
using Change = std::function<void()>;

Q_DECLARE_METATYPE(Change)

namespace {

/// The name of the program whose text the driver is to refuse, and how often it did.
QByteArray refusedProgram;
int refusals = 0;

/// Counts how often it is drawn.
class CountingView : public VistrelView
{
public:
    using VistrelView::VistrelView;

    void paint(QPainter *painter) override
    {
        ++drawn;
        VistrelView::paint(painter);
    }

    std::atomic_int drawn{0};
};

/// Brings the view's next picture while the scene is synchronised, as an image does.
class LateItem : public QQuickItem
{
public:
    LateItem(QQuickItem *parent, VxTextureProvider *provider)
        : QQuickItem(parent)
        , m_provider(provider)
    {
        setFlag(ItemHasContents);
    }

protected:
    QSGNode *updatePaintNode(QSGNode *, UpdatePaintNodeData *) override
    {
        m_provider->noteNewContent();
        return nullptr;
    }

private:
    VxTextureProvider *m_provider;
};

const QImage kPanorama = PanoramaReference::testPanorama({256, 128});

} // namespace

// The linker leads every call of ShaderProgram::build() here.
extern "C" {
using Build = QOpenGLShaderProgram *(const char *, const QByteArray &, const QByteArray &);
Build realBuild asm("__real__ZN13ShaderProgram5buildEPKcRK10QByteArrayS4_");
Build wrappedBuild asm("__wrap__ZN13ShaderProgram5buildEPKcRK10QByteArrayS4_");

QOpenGLShaderProgram *wrappedBuild(const char *name, const QByteArray &vertexSource,
                                   const QByteArray &fragmentSource)
{
    if (refusedProgram != name)
        return realBuild(name, vertexSource, fragmentSource);
    ++refusals;
    return realBuild(name, vertexSource, "void main() { nothing; }\n");
}
}

class TestVistrelView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        m_app = std::make_unique<FakeApplication>();
        m_window = std::make_unique<QQuickWindow>();
        m_window->resize(320, 240);
        m_app->makeObjects(m_window.get());
        m_view = new CountingView(m_window->contentItem());
        m_view->setSize(QSizeF(300, 180));
        m_view->init(m_app.get());
        m_frames = std::make_unique<RenderThread::FrameCounter>(*m_window);
        m_window->show();
        show(kPanorama);
    }

    void cleanup()
    {
        refuse({});
        m_frames.reset();
        m_window.reset();
        m_app.reset();
    }

    void showsThePresentState_data()
    {
        QTest::addColumn<Change>("change");
        const auto row = [](const char *name, const Change &change) {
            QTest::newRow(name) << change;
        };
        row("yaw", [this] { camera().setYaw(0.5F); });
        row("initial orientation", [this] { camera().setInitialOrientation(0, 0.3F, 0); });
        row("field of view", [this] { camera().setFov(120); });
        row("left limit", [this] { camera().setYawMin(-1); });
        row("right limit", [this] { camera().setYawMax(1); });
        row("lower limit", [this] { camera().setPitchMin(-0.3F); });
        row("upper limit", [this] { camera().setPitchMax(0.3F); });
        row("television", [this] {
            camera().setTv3dView(true);
            camera().setSplitView(true);
        });
        row("stereo in split view of an odd width", [this] {
            m_view->setWidth(301);
            camera().setSplitView(true);
            modes().setStereoMode(Builder::STEREO_3D_SIDEBYSIDE);
        });
        row("effect", [this] { modes().setEffect(Builder::SEPIA); });
        row("output projection", [this] { modes().setProjection(Builder::LITTLE_PLANET); });
        row("input projection", [this] { modes().setProjectionSource(Builder::CUBEMAP); });
        for (const float pitch : {1.2F, -1.2F}) {
            row(pitch > 0 ? "flat picture beyond its edge" : "flat picture beyond its other edge",
                [this, pitch] {
                    modes().setProjectionSource(Builder::STANDARD);
                    camera().setFov(100);
                    camera().setPitch(pitch);
                });
        }
        row("nothing", [this] { m_app->provider->setTextureId(0); });
        row("exchanged colours", [this] { modes().setInvertedColors(true); });
        row("height above the width", [this] { m_view->setWidth(120); });
        row("another texture", [this] { show(kPanorama.mirrored()); });
        row("another picture in the texture", [this] {
            m_source = kPanorama.mirrored();
            RenderThread::upload(*m_window, m_source, m_texture);
            m_app->provider->noteNewContent();
        });
        row("turned while the window is hidden", [this] {
            m_window->hide();
            camera().setYaw(1);
            m_window->show();
            QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        });
    }

    void showsThePresentState()
    {
        QFETCH(Change, change);
        compare();
        const QImage before = shown();
        change();
        compare();
        QVERIFY(PanoramaReference::compare(before, shown(), 3).share < 0.99);
        const int drawn = m_view->drawn;
        QVERIFY(m_frames->wait(5));
        QCOMPARE(m_view->drawn.load(), drawn);
    }

    void showsTheSameAfterChangesBack()
    {
        const std::pair<Change, Change> changes[] = {
            {[&] { m_view->setWidth(50); }, [&] { m_view->setWidth(300); }},
            {[&] { m_view->setHeight(0); }, [&] { m_view->setHeight(180); }},
            {[&] { m_view->setVisible(false); }, [&] { m_view->setVisible(true); }},
            {[&] { m_view->setParentItem(nullptr); },
             [&] { m_view->setParentItem(m_window->contentItem()); }},
            {[&] { camera().setYaw(1); }, [&] { camera().setYaw(0); }},
        };
        for (const auto &[away, back] : changes) {
            for (const int milliseconds : {0, 50}) { // between two frames, or with some of them
                away();
                m_window->update();
                if (milliseconds > 0)
                    QTest::qWait(milliseconds);
                back();
                compare();
            }
        }
    }

    // While the next medium is on its way, for whose start the camera has turned already.
    void keepsThePictureBetweenTwoMedia()
    {
        compare();
        const QImage before = shown();
        m_view->setKeepsPicture(true);
        m_app->provider->setTextureId(0);
        camera().setYaw(1);
        QVERIFY(m_frames->wait(3));
        QCOMPARE(shown(), before);
        m_app->provider->setTextureId(int(m_texture));
        compare();
        m_app->provider->setTextureId(0);
        m_view->setKeepsPicture(false);
        compare();
    }

    void restsUntilSomethingChanges()
    {
        LateItem late(m_window->contentItem(), m_app->provider);
        QTRY_COMPARE(m_view->fps(), 0);
        const int swapped = m_frames->count();
        const int drawn = m_view->drawn;
        QTest::qWait(300);
        QCOMPARE(m_frames->count(), swapped);

        // Each change is drawn once, by itself and in the next frame.
        for (int turn = 1; turn <= 6; ++turn) {
            if (turn % 3 == 0)
                camera().setYaw(0.1F * float(turn));
            else if (turn % 3 == 1)
                m_app->provider->noteNewContent();
            else
                late.update();
            QTRY_COMPARE(m_frames->count(), swapped + turn);
            QTest::qWait(50);
            QCOMPARE(m_frames->count(), swapped + turn);
            QCOMPARE(m_view->drawn.load(), drawn + turn);
        }
        QTRY_VERIFY(m_view->fps() > 0);
    }

    void newSceneGraph()
    {
        if (RenderThread::noNewSceneGraph())
            QSKIP(RenderThread::noNewSceneGraph());
        for (const bool mirrored : {false, true}) {
            showInterface(true, true); // its programs must go too
            QVERIFY(RenderThread::hideWithSceneGraph(*m_window));
            m_window->show();
            m_interface.activated = false;
            show(kPanorama.mirrored(mirrored)); // very likely under the number of the one before
            compare();
        }
    }

    void needsSurroundings()
    {
        VistrelView view(m_window->contentItem());
        view.setSize(QSizeF(50, 50));
        QVector<int> told;
        const auto note = [&] { told.append(view.fps()); };
        connect(&view, &VistrelView::fpsChanged, &view, note, Qt::DirectConnection);
        QObject stranger;
        view.init(&stranger);
        view.init(nullptr);
        QVERIFY(m_frames->wait(3));
        QVERIFY(told.isEmpty());
        view.init(m_app.get());
        QTRY_VERIFY(!told.isEmpty());
        QCOMPARE(told.first(), 1); // from the first frame on
    }

    void dimsToTheHalf()
    {
        QImage image;
        QVERIFY(RenderThread::run(*m_window, [&](QOpenGLFunctions *gl) {
            QOpenGLFramebufferObject target(QSize(8, 4));
            target.bind();
            gl->glClearColor(1, 0.5F, 0, 1);
            gl->glClear(GL_COLOR_BUFFER_BIT);
            gl->glViewport(0, 0, 4, 4);
            m_view->drawDim(gl);
            if (!gl->glIsEnabled(GL_BLEND))
                image = target.toImage();
        }));
        QVERIFY(qAbs(qRed(image.pixel(3, 3)) - 127) <= 1);
        QVERIFY(qAbs(qGreen(image.pixel(0, 0)) - 64) <= 1);
        QCOMPARE(qRed(image.pixel(4, 0)), 255);
    }

    void interfaceStandsInItsPlace()
    {
        camera().setSplitView(true);
        camera().setYaw(0.4F);
        showInterface(false, true); // the foreground turns with the view
        QVERIFY(isMarkedAt(0));
        m_view->setWidth(260);
        QVERIFY(isMarkedAt(0)); // in the first frame of a new size
        m_view->setWidth(300);
        showInterface(true, false); // the wall stays in the world
        QVERIFY(isMarkedAt(-36));
        m_interface.matrix = camera().rotationMatrix().inverted(); // where it was opened
        QVERIFY(m_frames->wait(3));
        QVERIFY(isMarkedAt(0));
    }

    void brokenShader()
    {
        refuse("panorama");
        modes().setEffect(Builder::SEPIA);
        QVERIFY(m_frames->wait(5));
        QCOMPARE(refusals, 1);
        // Nothing but another mode is worth another try.
        refusedProgram.clear();
        camera().setYaw(0.3F);
        QVERIFY(m_frames->wait(5));
        QVERIFY(PanoramaReference::compare(shown(), background(), 0).share == 1);
        modes().setEffect(Builder::NO_EFFECT);
        compare();
    }

    void brokenInterfaceShader()
    {
        refuse("overlay");
        showInterface(true, true);
        QCOMPARE(refusals, 1);
        // The panorama alone is left, blurred: its edges are gone, the rest is where it was.
        QCOMPARE(FakeInterface::markIn(shown()), -1.0);
        const double same = PanoramaReference::compare(shown(), expected(), 16).share;
        QVERIFY2(same > 0.8 && same < 0.98, qPrintable(QString::number(same)));
        refusedProgram.clear();
        modes().setEffect(Builder::TV);
        modes().setEffect(Builder::NO_EFFECT);
        QVERIFY(m_frames->wait(3));
        QVERIFY(FakeInterface::markIn(shown()) > 0);
        m_interface.activated = false;
        compare();
    }

private:
    VxGlobalObject &camera() { return *m_app->controller; }

    VxShaderCodeBuilder &modes() { return *m_app->builder; }

    void show(const QImage &source)
    {
        m_source = source;
        m_texture = RenderThread::upload(*m_window, source);
        m_app->provider->setTextureId(int(m_texture));
        QVERIFY(m_frames->wait(3));
    }

    void showInterface(bool markWall, bool markForeground)
    {
        m_interface.activated = true;
        const auto upload = [this](bool marked) {
            return int(RenderThread::upload(*m_window, FakeInterface::layer(marked)));
        };
        m_interface.wall = upload(markWall);
        m_interface.foreground = upload(markForeground);
        m_app->uiManager = &m_interface;
        QVERIFY(m_frames->wait(5));
    }

    /// Whether the interface's mark is so far off the middle of each eye's picture, in item units.
    bool isMarkedAt(double offset)
    {
        const QImage image = shown();
        const int half = image.width() / 2;
        const auto isThere = [&](int left) {
            const double mark = FakeInterface::markIn(image.copy(left, 0, half, image.height()));
            return qAbs((mark - 0.5) * m_view->width() / 2 - offset) < 3;
        };
        return isThere(0) && isThere(half);
    }

    /// Without the log of it.
    static void refuse(const QByteArray &program)
    {
        QLoggingCategory::setFilterRules(program.isEmpty() ? "" : "tavro.shader.warning=false");
        refusedProgram = program;
        refusals = 0;
    }

    /// What the window shows of the item.
    QImage shown()
    {
        const qreal ratio = m_window->effectiveDevicePixelRatio();
        return m_window->grabWindow().copy({QPoint(0, 0), (m_view->size() * ratio).toSize()});
    }

    QImage background()
    {
        QImage grey(shown().size(), QImage::Format_RGB32);
        grey.fill(QColor(34, 34, 34));
        return grey;
    }

    /// The picture of the state, which follows from the item and not from the view's members.
    QImage expected()
    {
        if (m_app->provider->textureId() == 0)
            return background();
        PanoramaScene scene;
        scene.item = m_view->size().toSize();
        scene.devicePixelRatio = m_window->effectiveDevicePixelRatio();
        scene.splitView = camera().splitView();
        scene.tv3dView = camera().tv3dView();
        scene.projectionSource = modes().projectionSource();
        scene.projection = modes().projection();
        scene.stereoMode = modes().stereoMode();
        scene.effect = modes().effect();
        scene.invertedColors = modes().invertedColors();
        const auto angles = CameraMath::eulerFromMatrix(camera().rotationMatrix());
        scene.yaw = double(angles.yaw);
        scene.pitch = double(angles.pitch);
        scene.roll = double(angles.roll);
        scene.fov = double(camera().fov());
        scene.yawMin = double(camera().yawMin());
        scene.yawMax = double(camera().yawMax());
        scene.pitchMin = double(camera().pitchMin());
        scene.pitchMax = double(camera().pitchMax());
        return PanoramaReference::render(scene, m_source);
    }

    /// Lets the changes of the state be seen, and compares.
    void compare()
    {
        QVERIFY(m_frames->wait(3));
        const auto result = PanoramaReference::compare(shown(), expected());
        QVERIFY2(result.share >= 0.995, result.text().constData());
    }

    FakeInterface m_interface;
    std::unique_ptr<FakeApplication> m_app;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<RenderThread::FrameCounter> m_frames;
    CountingView *m_view = nullptr;
    QImage m_source;
    GLuint m_texture = 0;
};

QTEST_MAIN(TestVistrelView)
#include "tst_vistrelview.moc"
