// SPDX-License-Identifier: GPL-3.0-or-later
// The panorama item in a window: its picture is always that of the present state, and a frame in
// which nothing changed is not drawn again.
#include "RenderThread.h"
#include "devices/VxHmdUIManager.h"
#include "render/PanoramaProgram.h"
#include "render/ShaderProgram.h"
#include "render/VistrelView.h"
#include "tests/common/FakeApplication.h"

#include <QOffscreenSurface>
#include <QOpenGLShaderProgram>
#include <QOpenGLTexture>
#include <QSignalSpy>

#include <memory>

namespace {

const QColor kBackground(34, 34, 34);

/// The name of the program whose text the driver is to refuse; empty: none.
QByteArray refusedProgram;

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

/// An interface of plain pictures.
class FakeInterface : public VxHmdUIManager
{
public:
    bool isActivated() const override { return activated; }

    QMatrix4x4 uiMatrixCopy() const override { return matrix; }

    int textureId(int layer) const override { return layer == 0 ? wall : foreground; }

    QSize textureSize(int) const override { return {256, 128}; }

    bool activated = true;
    QMatrix4x4 matrix;
    int wall = 0;
    int foreground = 0;
};

/// A source in which no two places and no two halves are alike.
QImage panorama(int shift = 0)
{
    QImage image(256, 128, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb((x + shift) % 256, 2 * y, (x / 16 + y / 16) % 2 ? 200 : 60));
    }
    return image;
}

/// Transparent but for a square in the middle.
QImage square(const QColor &color)
{
    QImage image(256, 128, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    for (int y = 54; y < 74; ++y) {
        for (int x = 118; x < 138; ++x)
            image.setPixelColor(x, y, color);
    }
    return image;
}

/// The share of pixels that differ by more than rounding.
double difference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return 1;
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            count += qAbs(qRed(p) - qRed(q)) > 3 || qAbs(qGreen(p) - qGreen(q)) > 3
                || qAbs(qBlue(p) - qBlue(q)) > 3;
        }
    }
    return double(count) / (a.width() * a.height());
}

/// Where the pixels of a colour lie on average; -1 without any.
double centreOf(const QImage &image, const std::function<bool(QRgb)> &matches)
{
    qint64 sum = 0;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (matches(image.pixel(x, y))) {
                sum += x;
                ++count;
            }
        }
    }
    return count == 0 ? -1 : double(sum) / count;
}

bool isRed(QRgb pixel)
{
    return qRed(pixel) > 200 && qGreen(pixel) < 60 && qBlue(pixel) < 60;
}

bool isGreen(QRgb pixel)
{
    return qRed(pixel) < 60 && qGreen(pixel) > 200 && qBlue(pixel) < 60;
}

QVector<QString> shaderMessages;

void noteShaderMessages(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (qstrcmp(context.category, "tavro.shader") == 0 && message.contains("does not build"))
        shaderMessages.append(message);
    else if (qstrcmp(context.category, "tavro.shader") != 0 && type >= QtWarningMsg)
        fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

// The linker leads every call of ShaderProgram::build() here.
extern "C" {
QOpenGLShaderProgram *realBuild(
    const char *name, const QByteArray &vertexSource,
    const QByteArray &fragmentSource) asm("__real__ZN13ShaderProgram5buildEPKcRK10QByteArrayS4_");
QOpenGLShaderProgram *wrappedBuild(
    const char *name, const QByteArray &vertexSource,
    const QByteArray &fragmentSource) asm("__wrap__ZN13ShaderProgram5buildEPKcRK10QByteArrayS4_");

QOpenGLShaderProgram *wrappedBuild(const char *name, const QByteArray &vertexSource,
                                   const QByteArray &fragmentSource)
{
    const bool refused = refusedProgram == name;
    return realBuild(name, vertexSource,
                     refused ? QByteArray("void main() { nothing; }\n") : fragmentSource);
}
}

class TestVistrelView : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void showsThePresentState_data();
    void showsThePresentState();
    void keepsAnUnchangedFrame();
    void newSceneGraph();
    void nothingToShow();
    void withoutSurroundings();
    void countsFromTheFirstFrame();
    void dimsToTheHalf();
    void interfaceBlursThePanorama();
    void interfaceStandsInItsPlace_data();
    void interfaceStandsInItsPlace();
    void interfaceInBothEyes();
    void brokenShader();
    void brokenInterfaceShader();

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

    /// What the window shows of the item.
    QImage shown()
    {
        const QImage image = m_window->grabWindow();
        const qreal ratio = m_window->effectiveDevicePixelRatio();
        return image.copy(QRect(QPoint(0, 0), (m_view->size() * ratio).toSize()))
            .convertToFormat(QImage::Format_RGB32);
    }

    QImage expected();

    /// Lets the changes of the state be seen, and compares.
    void compare()
    {
        QVERIFY(m_frames->wait(3));
        const QImage actual = shown();
        const QImage reference = expected();
        const double share = difference(actual, reference);
        if (share > 0.002) {
            actual.save(QDir::temp().filePath("actual.png"));
            reference.save(QDir::temp().filePath("expected.png"));
        }
        QVERIFY2(share <= 0.002, qPrintable(QString::number(share)));
    }

    struct Change
    {
        const char *name;
        bool isSeen; // in the picture, once it is there
        std::function<void(TestVistrelView &)> apply;
    };

    static const QVector<Change> kChanges;

    std::unique_ptr<QOffscreenSurface> m_surface;
    std::unique_ptr<QOpenGLContext> m_context; // of the reference
    std::unique_ptr<FakeApplication> m_app;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<RenderThread::FrameCounter> m_frames;
    CountingView *m_view = nullptr;
    QImage m_source;
    GLuint m_texture = 0;
};

const QVector<TestVistrelView::Change> TestVistrelView::kChanges{
    {"yaw", true, [](auto &t) { t.camera().setYaw(0.5F); }},
    {"pitch", true, [](auto &t) { t.camera().setPitch(0.5F); }},
    {"roll", true, [](auto &t) { t.camera().setRoll(0.5F); }},
    {"initial orientation", true, [](auto &t) { t.camera().setInitialOrientation(0, 0.3F, 0); }},
    {"field of view", true, [](auto &t) { t.camera().setFov(120); }},
    {"left limit", true, [](auto &t) { t.camera().setYawMin(-1); }},
    {"right limit", true, [](auto &t) { t.camera().setYawMax(1); }},
    {"lower limit", true, [](auto &t) { t.camera().setPitchMin(-0.3F); }},
    {"upper limit", true, [](auto &t) { t.camera().setPitchMax(0.3F); }},
    {"split view", true, [](auto &t) { t.camera().setSplitView(true); }},
    {"television", true,
     [](auto &t) {
         t.camera().setTv3dView(true);
         t.camera().setSplitView(true);
     }},
    {"split view of an odd width", true,
     [](auto &t) {
         t.m_view->setWidth(301);
         t.camera().setSplitView(true);
     }},
    {"stereo in split view", true,
     [](auto &t) {
         t.camera().setSplitView(true);
         t.modes().setStereoMode(VxShaderCodeBuilder::STEREO_3D_SIDEBYSIDE);
     }},
    {"stereo layout", true,
     [](auto &t) { t.modes().setStereoMode(VxShaderCodeBuilder::STEREO_3D_OVERUNDER); }},
    {"effect", true, [](auto &t) { t.modes().setEffect(VxShaderCodeBuilder::SEPIA); }},
    {"output projection", true,
     [](auto &t) { t.modes().setProjection(VxShaderCodeBuilder::LITTLE_PLANET); }},
    {"input projection", true,
     [](auto &t) { t.modes().setProjectionSource(VxShaderCodeBuilder::CUBEMAP); }},
    {"flat picture beyond its edge", true,
     [](auto &t) {
         t.modes().setProjectionSource(VxShaderCodeBuilder::STANDARD);
         t.camera().setFov(100);
         t.camera().setPitch(1.2F);
     }},
    {"exchanged colours", true, [](auto &t) { t.modes().setInvertedColors(true); }},
    {"width", true, [](auto &t) { t.m_view->setWidth(200); }},
    {"height above the width", true, [](auto &t) { t.m_view->setSize(QSizeF(120, 200)); }},
    {"another texture", true, [](auto &t) { t.show(panorama(100)); }},
    {"another picture in the texture", true,
     [](auto &t) {
         t.m_source = panorama(100);
         RenderThread::upload(*t.m_window, t.m_source, t.m_texture);
         t.m_app->provider->noteNewContent();
     }},
    {"sized and sized back between two frames", false,
     [](auto &t) {
         const QSizeF size = t.m_view->size();
         t.m_view->setSize(QSizeF(50, 50));
         t.m_view->setSize(size);
     }},
    {"sized and sized back", false,
     [](auto &t) {
         const QSizeF size = t.m_view->size();
         t.m_view->setSize(QSizeF(50, 50));
         QVERIFY(t.m_frames->wait(2));
         t.m_view->setSize(size);
     }},
    {"no size and sized back", false,
     [](auto &t) {
         const QSizeF size = t.m_view->size();
         t.m_view->setSize(QSizeF());
         t.m_window->update();
         QTest::qWait(50);
         t.m_view->setSize(size);
     }},
    {"hidden and shown", false,
     [](auto &t) {
         t.m_view->setVisible(false);
         t.m_window->update();
         QTest::qWait(50);
         t.m_view->setVisible(true);
     }},
    {"taken out of the scene and put back", false,
     [](auto &t) {
         t.m_view->setParentItem(nullptr);
         t.m_window->update();
         QTest::qWait(50);
         t.m_view->setParentItem(t.m_window->contentItem());
     }},
    {"window hidden and shown", false,
     [](auto &t) {
         t.m_window->hide();
         t.m_window->show();
         QVERIFY(QTest::qWaitForWindowExposed(t.m_window.get()));
     }},
    {"turned while the window is hidden", true,
     [](auto &t) {
         t.m_window->hide();
         t.camera().setYaw(1);
         t.m_window->show();
         QVERIFY(QTest::qWaitForWindowExposed(t.m_window.get()));
     }},
    {"turned and turned back between two frames", false,
     [](auto &t) {
         t.camera().setYaw(1);
         t.camera().setYaw(0);
     }},
};

void TestVistrelView::initTestCase()
{
    m_surface = std::make_unique<QOffscreenSurface>();
    m_surface->create();
    m_context = std::make_unique<QOpenGLContext>();
    QVERIFY(m_context->create());
}

void TestVistrelView::cleanupTestCase()
{
    m_context.reset();
    m_surface.reset();
}

void TestVistrelView::init()
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
    QVERIFY(m_frames->wait(1));
    show(panorama());
}

void TestVistrelView::cleanup()
{
    refusedProgram.clear();
    m_frames.reset();
    m_window.reset();
    m_app.reset();
}

// Draws the state by itself: the parameters follow from the item, not from the view's members.
QImage TestVistrelView::expected()
{
    const bool split = camera().splitView();
    const int w = int(split && !camera().tv3dView() ? m_view->width() / 2 : m_view->width());
    const int h = int(m_view->height());
    PanoramaUniforms uniforms;
    uniforms.matViewInverse = camera().rotationMatrix();
    uniforms.viewportSize = {float(w), float(h)};
    uniforms.viewportSizeMin = {float(qMin(w, h)), float(qMin(w, h))};
    uniforms.viewportSizeRatio = {float(qMax(w, h)) / float(h), float(h) / float(qMin(w, h))};
    uniforms.fov = camera().fov();
    uniforms.yaw = camera().yaw();
    uniforms.pitch = camera().adjustedPitch();
    uniforms.yawMin = camera().yawMin();
    uniforms.yawMax = camera().yawMax();
    uniforms.pitchMin = camera().pitchMin();
    uniforms.pitchMax = camera().pitchMax();

    const qreal ratio = m_window->effectiveDevicePixelRatio();
    const int eyeWidth = int(int(split ? m_view->width() / 2 : m_view->width()) * ratio);
    const int eyeHeight = int(h * ratio);

    m_context->makeCurrent(m_surface.get());
    QImage image;
    {
        QOpenGLFunctions *gl = m_context->functions();
        QOpenGLFramebufferObject target((m_view->size() * ratio).toSize());
        target.bind();
        gl->glClearColor(kBackground.redF(), kBackground.greenF(), kBackground.blueF(), 1);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        const auto program = PanoramaProgram::build(
            "reference", modes().fragmentShaderSource(false, false, false), {});
        QOpenGLTexture texture(m_source, QOpenGLTexture::DontGenerateMipMaps);
        for (int eye = 0; program && eye < (split ? 2 : 1); ++eye) {
            gl->glViewport(eye * eyeWidth, 0, eyeWidth, eyeHeight);
            program->draw(gl, uniforms, eye, texture.textureId());
        }
        image = target.toImage().convertToFormat(QImage::Format_RGB32);
    }
    m_context->doneCurrent();
    return image;
}

void TestVistrelView::showsThePresentState_data()
{
    QTest::addColumn<int>("change");
    for (int i = 0; i < kChanges.size(); ++i)
        QTest::newRow(kChanges[i].name) << i;
}

void TestVistrelView::showsThePresentState()
{
    QFETCH(int, change);
    compare();
    const QImage before = shown();
    kChanges[change].apply(*this);
    compare();
    QCOMPARE(difference(before, shown()) > 0.01, kChanges[change].isSeen);

    const int drawn = m_view->drawn;
    QVERIFY(m_frames->wait(5));
    QCOMPARE(m_view->drawn.load(), drawn);
}

void TestVistrelView::keepsAnUnchangedFrame()
{
    const int drawn = m_view->drawn;
    QSignalSpy fps(m_view, &VistrelView::fpsChanged);
    // The swaps go on by themselves, and the kept frames count.
    QVERIFY(m_frames->wait(30));
    QTRY_VERIFY(fps.count() >= 2);
    QVERIFY(m_view->fps() > 10);
    QCOMPARE(m_view->drawn.load(), drawn);
    compare();

    // Each frame that comes is drawn, and drawn once.
    for (int turn = 1; turn <= 5; ++turn) {
        camera().setYaw(0.1F * float(turn));
        QVERIFY(m_frames->wait(3));
        QCOMPARE(m_view->drawn.load(), drawn + turn);
    }
}

void TestVistrelView::newSceneGraph()
{
    if (RenderThread::noNewSceneGraph())
        QSKIP(RenderThread::noNewSceneGraph());
    FakeInterface interface;
    m_app->uiManager = &interface;
    for (int times = 0; times < 2; ++times) {
        QVERIFY(m_frames->wait(3)); // with the interface, whose programs must go too
        QVERIFY(RenderThread::hideWithSceneGraph(*m_window));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        interface.activated = false;
        show(panorama(50 * times)); // very likely under the number of the one before
        compare();
        interface.activated = true;
        interface.wall = interface.foreground =
            int(RenderThread::upload(*m_window, square(Qt::red)));
        QVERIFY(m_frames->wait(3));
        QVERIFY(centreOf(shown(), isRed) > 0);
        QVERIFY(difference(shown(), expected()) > 0.01);
    }
}

void TestVistrelView::nothingToShow()
{
    m_app->provider->setTextureId(0);
    QVERIFY(m_frames->wait(3));
    QImage grey(shown().size(), QImage::Format_RGB32);
    grey.fill(kBackground);
    QCOMPARE(difference(shown(), grey), 0.0);
    m_app->provider->setTextureId(int(m_texture));
    compare();
}

void TestVistrelView::withoutSurroundings()
{
    VistrelView view(m_window->contentItem());
    QObject stranger;
    view.init(&stranger);
    view.init(nullptr);
    view.setSize(QSizeF(50, 50));
    view.computeViewportParameters();
    QVERIFY(m_frames->wait(3));
    QCOMPARE(view.fps(), 0);
}

void TestVistrelView::countsFromTheFirstFrame()
{
    CountingView view(m_window->contentItem());
    view.setSize(QSizeF(50, 50));
    QVector<int> told;
    connect(
        &view, &VistrelView::fpsChanged, &view, [&] { told.append(view.fps()); },
        Qt::DirectConnection);
    view.init(m_app.get());
    QTRY_VERIFY(!told.isEmpty());
    QCOMPARE(told.first(), 1);
}

void TestVistrelView::dimsToTheHalf()
{
    VistrelView view;
    view.init(m_app.get());
    m_context->makeCurrent(m_surface.get());
    QOpenGLFunctions *gl = m_context->functions();
    QOpenGLFramebufferObject target(QSize(8, 4));
    target.bind();
    gl->glClearColor(1, 0.5F, 0, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    gl->glViewport(0, 0, 4, 4);
    view.drawDim(gl);
    const QImage image = target.toImage();
    QVERIFY(qAbs(qRed(image.pixel(3, 3)) - 127) <= 1 && qAbs(qGreen(image.pixel(0, 0)) - 64) <= 1);
    QCOMPARE(qRed(image.pixel(4, 0)), 255);
    QVERIFY(!gl->glIsEnabled(GL_BLEND));
    target.release();
    m_context->doneCurrent();
}

void TestVistrelView::interfaceBlursThePanorama()
{
    QImage edge(2048, 1024, QImage::Format_RGB32);
    edge.fill(Qt::black);
    for (int y = 0; y < 1024; ++y)
        std::fill_n(reinterpret_cast<QRgb *>(edge.scanLine(y)) + 1024, 1024, qRgb(255, 255, 255));
    const auto greys = [this] {
        const QImage image = shown();
        int count = 0;
        for (int x = 0; x < image.width(); ++x) {
            const int level = qRed(image.pixel(x, image.height() / 2));
            count += level > 20 && level < 235;
        }
        return count;
    };
    show(edge);
    compare();
    QVERIFY(greys() <= 4);

    FakeInterface interface;
    interface.wall = interface.foreground =
        int(RenderThread::upload(*m_window, square(Qt::transparent)));
    m_app->uiManager = &interface;
    QVERIFY(m_frames->wait(3));
    QVERIFY(greys() > 10);
    // The sides stay where they are, and no eye of the interface shows the other's half.
    QCOMPARE(qRed(shown().pixel(2, 90)) < 20, true);
    QCOMPARE(qRed(shown().pixel(shown().width() - 3, 90)) > 235, true);

    interface.activated = false;
    compare();
    QVERIFY(greys() <= 4);
}

void TestVistrelView::interfaceStandsInItsPlace_data()
{
    QTest::addColumn<bool>("foreground");
    QTest::addColumn<bool>("turnedWall");
    QTest::addColumn<int>("side"); // where a square stands when the camera turned to the right
    QTest::newRow("the wall stays in the world") << false << false << -1;
    QTest::newRow("the wall was opened in that direction") << false << true << 0;
    QTest::newRow("the foreground turns with the view") << true << false << 0;
}

void TestVistrelView::interfaceStandsInItsPlace()
{
    QFETCH(bool, foreground);
    QFETCH(bool, turnedWall);
    QFETCH(int, side);
    FakeInterface interface;
    const int empty = int(RenderThread::upload(*m_window, square(Qt::transparent)));
    const int marked = int(RenderThread::upload(*m_window, square(Qt::red)));
    interface.wall = foreground ? empty : marked;
    interface.foreground = foreground ? marked : empty;
    m_app->uiManager = &interface;
    QVERIFY(m_frames->wait(3));
    const double middle = shown().width() / 2.0;
    QVERIFY(qAbs(centreOf(shown(), isRed) - middle) < 3);

    camera().setYaw(0.4F);
    if (turnedWall)
        interface.matrix = camera().rotationMatrix().inverted();
    QVERIFY(m_frames->wait(3));
    const double centre = centreOf(shown(), isRed);
    QVERIFY(centre >= 0);
    if (side == 0)
        QVERIFY(qAbs(centre - middle) < 3);
    else
        QVERIFY(centre < middle - 30);
}

void TestVistrelView::interfaceInBothEyes()
{
    FakeInterface interface;
    interface.wall = int(RenderThread::upload(*m_window, square(Qt::red)));
    interface.foreground = int(RenderThread::upload(*m_window, square(Qt::transparent)));
    m_app->uiManager = &interface;
    camera().setSplitView(true);
    QVERIFY(m_frames->wait(3));
    const QImage image = shown();
    const int half = image.width() / 2;
    for (int eye = 0; eye < 2; ++eye) {
        const double centre = centreOf(image.copy(eye * half, 0, half, image.height()), isRed);
        QVERIFY(qAbs(centre - half / 2.0) < 3);
    }
    interface.activated = false;
    compare();
}

void TestVistrelView::brokenShader()
{
    shaderMessages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(noteShaderMessages);
    refusedProgram = "panorama";
    modes().setEffect(VxShaderCodeBuilder::SEPIA);
    QVERIFY(m_frames->wait(5));
    QImage grey(shown().size(), QImage::Format_RGB32);
    grey.fill(kBackground);
    QCOMPARE(difference(shown(), grey), 0.0);
    QCOMPARE(shaderMessages.size(), 1);
    QVERIFY(shaderMessages.first().contains("panorama"));

    // Nothing but another mode is worth another try.
    refusedProgram.clear();
    camera().setYaw(0.3F);
    QVERIFY(m_frames->wait(5));
    QCOMPARE(difference(shown(), grey), 0.0);
    modes().setEffect(VxShaderCodeBuilder::NO_EFFECT);
    compare();
    qInstallMessageHandler(previous);
}

void TestVistrelView::brokenInterfaceShader()
{
    shaderMessages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(noteShaderMessages);
    FakeInterface interface;
    interface.wall = interface.foreground = int(RenderThread::upload(*m_window, square(Qt::green)));
    refusedProgram = "overlay";
    m_app->uiManager = &interface;
    QVERIFY(m_frames->wait(5));
    QCOMPARE(shaderMessages.size(), 1);
    QCOMPARE(centreOf(shown(), isGreen), -1.0);
    QImage grey(shown().size(), QImage::Format_RGB32);
    grey.fill(kBackground);
    QVERIFY(difference(shown(), grey) > 0.9);

    refusedProgram.clear();
    modes().setEffect(VxShaderCodeBuilder::TV);
    modes().setEffect(VxShaderCodeBuilder::NO_EFFECT);
    QVERIFY(m_frames->wait(3));
    QVERIFY(centreOf(shown(), isGreen) > 0);
    qInstallMessageHandler(previous);
}

QTEST_MAIN(TestVistrelView)
#include "tst_vistrelview.moc"
