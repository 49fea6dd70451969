// SPDX-License-Identifier: GPL-3.0-or-later
// The panorama on the screen: what the real program shows for a picture, its modes and what the
// user does with mouse and keyboard, against the picture that the geometry gives.

#include "tests/e2e/PlayerProcess.h"

#include <QtTest>

#include <csignal>

using Builder = VxShaderCodeBuilder;

Q_DECLARE_METATYPE(PanoramaScene)

namespace {

/// The pixels of a part that are nearly white, each by its number.
QSet<int> litPixels(const QImage &image, const QRect &part)
{
    QSet<int> lit;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (qGray(image.pixel(x, y)) > 150)
                lit.insert(y * image.width() + x);
        }
    }
    return lit;
}

} // namespace

class TestPanorama : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void showsThePicture_data();
    void showsThePicture();
    void keysChangeTheMode_data();
    void keysChangeTheMode();
    void dragTurnsTheCamera_data();
    void dragTurnsTheCamera();
    void pressStopsTheInertia();
    void wheelZoomsWithinTheLimits_data();
    void wheelZoomsWithinTheLimits();
    void followsTheWindowSize();
    void showsALargePictureScaledDown();
    void leavesTheInterfaceIntact_data();
    void leavesTheInterfaceIntact();
    void showsTextAboveThePanorama_data();
    void showsTextAboveThePanorama();

private:
    QStringList file(const QString &name) const { return {m_dir.filePath(name)}; }

    QTemporaryDir m_dir;
    QImage m_source; // in sphere.png
};

void TestPanorama::initTestCase()
{
    m_source = PanoramaReference::testPanorama({1024, 512});
    QVERIFY(m_source.save(m_dir.filePath("sphere.png")));
    // Whoever runs the program may read it.
    QVERIFY(QFile::setPermissions(m_dir.path(), QFile::Permissions(0x7755)));
}

void TestPanorama::showsThePicture_data()
{
    QTest::addColumn<QByteArrayList>("settings");
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<PanoramaScene>("scene");
    const auto row = [](const char *name, const QByteArrayList &settings,
                        const PanoramaScene &scene, const QStringList &environment = {}) {
        QTest::newRow(name) << settings << environment << scene;
    };
    PanoramaScene scene;
    row("at the first start", {}, scene);
    row("in the basic render loop", {}, scene, {"QSG_RENDER_LOOP=basic"});
    row("in the threaded render loop", {}, scene, {"QSG_RENDER_LOOP=threaded"});

    scene.projectionSource = Builder::FISHEYE_CIRCLE;
    row("as a circular fisheye", {"input\\projection=3"}, scene);
    scene = {};
    row("with an automatic layout and nothing known", {"input\\projection=4"}, scene);

    const char *layouts[] = {"", "over-under", "side by side", "inverted over-under",
                             "inverted side by side"};
    for (int mode = Builder::STEREO_2D; mode < Builder::STEREO_AUTO; ++mode) {
        scene = {};
        scene.stereoMode = mode;
        const QByteArray stereo = "input\\stereoscopy=" + QByteArray::number(mode);
        if (mode != Builder::STEREO_2D)
            row(qPrintable(QString("the first eye, %1").arg(layouts[mode])), {stereo}, scene);
        scene.splitView = true;
        row(qPrintable(QString("both eyes in split view, %1").arg(layouts[mode])),
            {stereo, "output\\display=split"}, scene,
            {mode % 2 ? "QSG_RENDER_LOOP=basic" : "QSG_RENDER_LOOP=threaded"});
    }
    scene.tv3dView = true;
    row("both eyes for a 3D television", {"input\\stereoscopy=4", "output\\display=3d"}, scene);
}

void TestPanorama::showsThePicture()
{
    QFETCH(QByteArrayList, settings);
    QFETCH(QStringList, environment);
    QFETCH(PanoramaScene, scene);
    PlayerStart start;
    start.arguments = file("sphere.png");
    start.settings = settings;
    start.environment = environment;
    PlayerProcess player(start);
    VERIFY_PICTURE(player.waitForPicture(scene, m_source));
    QCOMPARE(player.noise(), QString());
}

void TestPanorama::keysChangeTheMode_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<PanoramaScene>("scene");
    const auto row = [](const char *name, const QStringList &keys, int input, int output,
                        double fov = 90) {
        PanoramaScene scene;
        scene.projectionSource = input;
        scene.projection = output;
        scene.fov = fov;
        QTest::newRow(name) << keys << scene;
    };
    row("rectilinear", {"ctrl+2"}, Builder::EQUIRECTANGULAR, Builder::RECTILINEAR);
    row("little planet", {"ctrl+3"}, Builder::EQUIRECTANGULAR, Builder::LITTLE_PLANET);
    row("fisheye", {"ctrl+4"}, Builder::EQUIRECTANGULAR, Builder::FISHEYE);
    row("back to the adaptive projection", {"ctrl+3", "ctrl+1"}, Builder::EQUIRECTANGULAR,
        Builder::TAVRO);
    row("the next projection three times", {"p", "p", "p"}, Builder::EQUIRECTANGULAR,
        Builder::FISHEYE);
    row("cubemap", {"alt+3"}, Builder::CUBEMAP, Builder::TAVRO);
    row("cubemap as a little planet", {"ctrl+3", "alt+3"}, Builder::CUBEMAP,
        Builder::LITTLE_PLANET);
    row("flat, at its own field of view", {"alt+4"}, Builder::STANDARD, Builder::TAVRO, 180);
    row("equirectangular after cubemap", {"alt+3", "alt+2"}, Builder::EQUIRECTANGULAR,
        Builder::TAVRO);
    row("automatic keeps what is known", {"alt+3", "alt+1"}, Builder::CUBEMAP, Builder::TAVRO);
    row("a flat picture knows no output projection", {"alt+4", "p"}, Builder::STANDARD,
        Builder::TAVRO, 180);
    row("zoomed by keys", {"minus", "minus", "plus", "minus"}, Builder::EQUIRECTANGULAR,
        Builder::TAVRO, 96);
    PanoramaScene turned;
    turned.yaw = 0.5;
    turned.pitch = -0.5;
    QTest::newRow("turned by arrow keys") << QStringList{"Right", "Right", "Left", "Up"} << turned;
    QTest::newRow("reset") << QStringList{"Right", "Up", "z"} << PanoramaScene();
}

void TestPanorama::keysChangeTheMode()
{
    QFETCH(QStringList, keys);
    QFETCH(PanoramaScene, scene);
    PlayerStart start;
    start.arguments = file("sphere.png");
    // Arrow keys turn by half a radian.
    start.settings = {"general\\cameraMoveSteps=28.64788976", "general\\cameraInertia=1"};
    PlayerProcess player(start);
    VERIFY_PICTURE(player.waitForPicture(PanoramaScene(), m_source));
    player.keys(keys);
    VERIFY_PICTURE(player.waitForPicture(scene, m_source));
    QCOMPARE(player.noise(), QString());
}

void TestPanorama::dragTurnsTheCamera_data()
{
    QTest::addColumn<QByteArrayList>("settings");
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QPoint>("way");
    QTest::addColumn<double>("yaw");
    QTest::addColumn<double>("pitch");
    // 0.005 radians a pixel, ten times that where inertia carries the camera on.
    const auto row = [](const char *name, QPoint way, double yaw, double pitch,
                        const QByteArrayList &settings = {}, const QStringList &environment = {}) {
        QTest::newRow(name) << settings << environment << way << yaw << pitch;
    };
    const QByteArray still = "general\\cameraInertia=0";
    row("with inertia", {20, 12}, -1, -0.6);
    row("with inertia, in the basic render loop", {-16, 8}, 0.8, -0.4, {},
        {"QSG_RENDER_LOOP=basic"});
    row("across the seam", {-70, 0}, 3.5 - 2 * M_PI, 0);
    row("without inertia", {100, -60}, -0.5, 0.3, {still});
    row("with inverted axes", {100, -60}, 0.5, -0.3, {"general\\touchMode=false", still});
    row("not by a tremble", {6, -6}, 0, 0);
}

void TestPanorama::dragTurnsTheCamera()
{
    QFETCH(QByteArrayList, settings);
    QFETCH(QStringList, environment);
    QFETCH(QPoint, way);
    QFETCH(double, yaw);
    QFETCH(double, pitch);
    PlayerStart start;
    start.arguments = file("sphere.png");
    start.settings = settings;
    start.environment = environment;
    PlayerProcess player(start);
    VERIFY_PICTURE(player.waitForPicture(PanoramaScene(), m_source));

    player.drag({300, 240}, way);
    QTest::qWait(500);
    PanoramaScene scene;
    scene.yaw = yaw;
    scene.pitch = pitch;
    VERIFY_PICTURE(player.waitForPicture(scene, m_source));
}

void TestPanorama::pressStopsTheInertia()
{
    PlayerStart start;
    start.arguments = file("sphere.png");
    start.settings = {"general\\cameraInertia=60000"};
    PlayerProcess player(start);
    VERIFY_PICTURE(player.waitForPicture(PanoramaScene(), m_source));
    player.drag({300, 240}, {40, 0});
    QTest::qWait(1000);
    const QImage moving = player.screenshot();
    QTest::qWait(1000);
    QVERIFY(player.screenshot() != moving);
    PlayerProcess::mouse({"mousedown", "1"});
    QTest::qWait(200);
    const QImage stopped = player.screenshot();
    QTest::qWait(1000);
    QCOMPARE(player.screenshot(), stopped);
    PlayerProcess::mouse({"mouseup", "1"});
}

void TestPanorama::wheelZoomsWithinTheLimits_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("notches");
    QTest::addColumn<double>("fov");
    QTest::newRow("in by one notch") << "4" << 1 << 85.0;
    QTest::newRow("out by three notches") << "5" << 3 << 105.0;
    QTest::newRow("in to the limit") << "4" << 9 << 80.0;
    QTest::newRow("out to the limit") << "5" << 45 << 300.0;
}

void TestPanorama::wheelZoomsWithinTheLimits()
{
    QFETCH(QString, button);
    QFETCH(int, notches);
    QFETCH(double, fov);
    PlayerStart start;
    start.arguments = file("sphere.png");
    PlayerProcess player(start);
    VERIFY_PICTURE(player.waitForPicture(PanoramaScene(), m_source));
    player.movePointer({320, 200});
    PlayerProcess::mouse({"click", "--repeat", QString::number(notches), "--delay", "20", button});
    PanoramaScene scene;
    scene.fov = fov;
    VERIFY_PICTURE(player.waitForPicture(scene, m_source));
}

void TestPanorama::followsTheWindowSize()
{
    PlayerStart start;
    start.arguments = file("sphere.png");
    start.settings = {"output\\display=split"};
    PlayerProcess player(start);
    PanoramaScene scene;
    scene.splitView = true;
    VERIFY_PICTURE(player.waitForPicture(scene, m_source));
    // Odd, taller than wide for each eye, and back.
    for (const QSize size : {QSize(901, 505), QSize(640, 700), QSize(640, 480)}) {
        runTool("xdotool",
                {"windowsize", "--sync", QString::number(player.window()),
                 QString::number(size.width()), QString::number(size.height())});
        QTRY_COMPARE(player.screenshot().size(), size);
        VERIFY_PICTURE(player.waitForPicture(scene, m_source));
    }
}

void TestPanorama::showsALargePictureScaledDown()
{
    // Wider than what this machine's OpenGL takes as a texture.
    QImage wide(17000, 40, QImage::Format_RGB32);
    for (int y = 0; y < wide.height(); ++y) {
        for (int x = 0; x < wide.width(); ++x)
            wide.setPixel(x, y, qRgb(40 + x * 200 / wide.width(), 200 - y * 4, 90));
    }
    QVERIFY(wide.save(m_dir.filePath("wide.png")));
    PlayerStart start;
    start.arguments = file("wide.png");
    PlayerProcess player(start);
    VERIFY_PICTURE(player.waitForPicture(
        PanoramaScene(), wide.scaled(16384, 39, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
    QCOMPARE(player.noise(), QString());
}

void TestPanorama::leavesTheInterfaceIntact_data()
{
    QTest::addColumn<QString>("loop");
    QTest::newRow("basic") << "QSG_RENDER_LOOP=basic";
    QTest::newRow("threaded") << "QSG_RENDER_LOOP=threaded";
}

// What the raw OpenGL of the panorama leaves behind must not show in the texts and pictures that
// the scene graph draws after it.
void TestPanorama::leavesTheInterfaceIntact()
{
    QFETCH(QString, loop);
    PlayerStart start;
    start.environment = QStringList{loop};
    PlayerProcess empty(start);
    // The logo comes with its own thread.
    QTRY_VERIFY_WITH_TIMEOUT(empty.window() != 0, PlayerProcess::kPatienceMs);
    QTest::qWait(1500);
    const QImage infoScreen = empty.screenshot();
    empty.terminate(SIGTERM);
    QCOMPARE(empty.waitForEnd(), 0);

    start.arguments = file("sphere.png");
    start.settings = {"output\\display=split"};
    PlayerProcess player(start);
    PanoramaScene scene;
    scene.splitView = true;
    VERIFY_PICTURE(player.waitForPicture(scene, m_source));
    player.keys({"ctrl+w"});
    // Glyphs land in another place of their texture, which moves a level here and there.
    const auto likeness = [&] {
        return PanoramaReference::compare(player.screenshot(), infoScreen).share;
    };
    QTRY_VERIFY_WITH_TIMEOUT(likeness() > 0.999, PlayerProcess::kPatienceMs);
    QCOMPARE(player.noise(), QString());
}

void TestPanorama::showsTextAboveThePanorama_data()
{
    leavesTheInterfaceIntact_data();
}

// The same words in each mode, while the panorama is drawn below them.
void TestPanorama::showsTextAboveThePanorama()
{
    QFETCH(QString, loop);
    QSet<int> first;
    for (const char *display : {"normal", "split", "3d"}) {
        PlayerStart start;
        start.environment = QStringList{loop};
        start.arguments = file("sphere.png");
        start.settings = {QByteArray("output\\display=") + display};
        PlayerProcess player(start);
        PanoramaScene scene;
        scene.splitView = display != QLatin1String("normal");
        scene.tv3dView = display == QLatin1String("3d");
        VERIFY_PICTURE(player.waitForPicture(scene, m_source));
        player.keys({"h"});
        // The lines on the graphics card; what shines through is darker than their letters.
        const auto letters = [&] { return litPixels(player.screenshot(), {300, 20, 320, 50}); };
        QTRY_VERIFY_WITH_TIMEOUT(letters().size() > 300, PlayerProcess::kPatienceMs);
        QTest::qWait(300);
        const QSet<int> now = letters();
        if (first.isEmpty())
            first = now;
        // Their edges take on the colour behind them.
        const int same = QSet<int>(first).intersect(now).size();
        QVERIFY2(same * 10 > first.size() * 8 && same * 10 > now.size() * 8, display);
    }
}

QTEST_MAIN(TestPanorama)
#include "tst_panorama.moc"
