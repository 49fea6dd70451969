// SPDX-License-Identifier: GPL-3.0-or-later
// The panorama on the screen: what the real program shows for a picture, its modes and what the
// user does with mouse and keyboard, against the picture that the geometry gives.

#include "tests/e2e/PlayerProcess.h"

#include <QtTest>

#include <csignal>
#include <functional>

using Builder = VxShaderCodeBuilder;
using Action = std::function<void(PlayerProcess &)>;

Q_DECLARE_METATYPE(Action)
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

    void initTestCase() { QVERIFY(m_source.save(m_file)); }

    void showsThePicture_data()
    {
        QTest::addColumn<QByteArrayList>("settings");
        QTest::addColumn<QString>("loop");
        QTest::addColumn<Action>("action"); // of the user, on the picture at the start
        QTest::addColumn<PanoramaScene>("scene");
        const auto row = [](const char *name, const QByteArrayList &settings,
                            const PanoramaScene &scene, const char *loop = "threaded",
                            const Action &action = {}) {
            QTest::newRow(name) << settings << QString(loop) << action << scene;
        };
        PanoramaScene scene;
        row("in the basic render loop", {}, scene, "basic");
        row("in the threaded render loop", {}, scene);
        row("with an automatic layout and nothing known", {"input\\projection=4"}, scene);
        scene.projectionSource = Builder::FISHEYE_CIRCLE;
        row("as a circular fisheye", {"input\\projection=3"}, scene);
        scene = {};
        scene.stereoMode = Builder::STEREO_3D_OVERUNDER_INVERTED;
        row("the first eye", {"input\\stereoscopy=3"}, scene);
        scene.stereoMode = Builder::STEREO_3D_SIDEBYSIDE;
        scene.splitView = true;
        row("both eyes", {"input\\stereoscopy=2", "output\\display=split"}, scene, "basic");

        // 0.005 radians a pixel, ten times that where inertia carries the camera on.
        const auto drag = [&](const char *name, QPoint way, double yaw, double pitch,
                              const QByteArrayList &settings = {}, const char *loop = "threaded") {
            PanoramaScene turned;
            turned.yaw = yaw;
            turned.pitch = pitch;
            row(name, settings, turned, loop, [way](PlayerProcess &player) {
                player.drag({300, 240}, way);
                QTest::qWait(500);
            });
        };
        const QByteArray still = "general\\cameraInertia=0";
        drag("dragged with inertia", {20, 12}, -1, -0.6);
        drag("dragged with inertia, in the basic render loop", {-16, 8}, 0.8, -0.4, {}, "basic");
        drag("dragged without inertia", {100, -60}, -0.5, 0.3, {still});
        drag("dragged with inverted axes", {100, -60}, 0.5, -0.3,
             {"general\\touchMode=false", still});
        drag("not dragged by a tremble", {6, -6}, 0, 0);

        const auto wheel = [&](const char *name, const char *button, int notches, double fov) {
            PanoramaScene zoomed;
            zoomed.fov = fov;
            row(name, {}, zoomed, "threaded", [=](PlayerProcess &player) {
                player.movePointer({320, 200});
                PlayerProcess::mouse(
                    {"click", "--repeat", QString::number(notches), "--delay", "20", button});
            });
        };
        wheel("zoomed in by one notch", "4", 1, 85);
        wheel("zoomed out to the limit", "5", 45, 300);
    }

    void showsThePicture()
    {
        QFETCH(QByteArrayList, settings);
        QFETCH(QString, loop);
        QFETCH(Action, action);
        QFETCH(PanoramaScene, scene);
        PlayerProcess player(PlayerStart{{m_file}, settings, {"QSG_RENDER_LOOP=" + loop}});
        if (action) {
            VERIFY_PICTURE(player.waitForPicture({}, m_source));
            action(player);
        }
        VERIFY_PICTURE(player.waitForPicture(scene, m_source));
        QCOMPARE(player.noise(), QString());
    }

    void keysChangeTheMode()
    {
        struct Step
        {
            QStringList keys;
            int input;
            int output;
            double fov = 90;
            double yaw = 0;
            double pitch = 0;
        };

        // One after the other.
        const Step steps[] = {
            {{"ctrl+2"}, Builder::EQUIRECTANGULAR, Builder::RECTILINEAR},
            {{"ctrl+3"}, Builder::EQUIRECTANGULAR, Builder::LITTLE_PLANET},
            {{"ctrl+4"}, Builder::EQUIRECTANGULAR, Builder::FISHEYE},
            {{"p"}, Builder::EQUIRECTANGULAR, Builder::TAVRO},
            {{"p"}, Builder::EQUIRECTANGULAR, Builder::RECTILINEAR},
            {{"ctrl+1"}, Builder::EQUIRECTANGULAR, Builder::TAVRO},
            {{"minus", "minus", "plus", "minus"}, Builder::EQUIRECTANGULAR, Builder::TAVRO, 96},
            {{"Right", "Right", "Left", "Up"},
             Builder::EQUIRECTANGULAR,
             Builder::TAVRO,
             96,
             0.5,
             -0.5},
            {{"z"}, Builder::EQUIRECTANGULAR, Builder::TAVRO},
            {{"alt+3"}, Builder::CUBEMAP, Builder::TAVRO},
            {{"ctrl+3", "alt+1"}, Builder::CUBEMAP, Builder::LITTLE_PLANET}, // automatic: as it is
            {{"alt+2"}, Builder::EQUIRECTANGULAR, Builder::LITTLE_PLANET},
            {{"alt+4"}, Builder::STANDARD, Builder::TAVRO, 180}, // flat, all of it in view
            {{"p"}, Builder::STANDARD, Builder::TAVRO, 180}, // knows no output projection
        };
        PlayerProcess player(
            PlayerStart{{m_file},
                        // Arrow keys turn by half a radian.
                        {"general\\cameraMoveSteps=28.64788976", "general\\cameraInertia=1"}});
        VERIFY_PICTURE(player.waitForPicture({}, m_source));
        for (const Step &step : steps) {
            player.keys(step.keys);
            PanoramaScene scene;
            scene.projectionSource = step.input;
            scene.projection = step.output;
            scene.fov = step.fov;
            scene.yaw = step.yaw;
            scene.pitch = step.pitch;
            const auto result = player.waitForPicture(scene, m_source);
            QVERIFY2(result.share >= 0.99, qPrintable(step.keys.join(' ') + ": " + result.text()));
        }
        QCOMPARE(player.noise(), QString());
    }

    void pressStopsTheInertia()
    {
        PlayerProcess player(PlayerStart{{m_file}, {"general\\cameraInertia=60000"}});
        VERIFY_PICTURE(player.waitForPicture({}, m_source));
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

    void showsALargePictureScaledDown()
    {
        // Wider than what this machine's OpenGL takes as a texture.
        QImage wide(17000, 40, QImage::Format_RGB32);
        for (int y = 0; y < wide.height(); ++y) {
            for (int x = 0; x < wide.width(); ++x)
                wide.setPixel(x, y, qRgb(40 + x * 200 / wide.width(), 200 - y * 4, 90));
        }
        const QString file = m_dir.filePath("wide.png");
        QVERIFY(wide.save(file));
        PlayerProcess player(PlayerStart{{file}});
        VERIFY_PICTURE(player.waitForPicture(
            {}, wide.scaled(16384, 39, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
        QCOMPARE(player.noise(), QString());
    }

    void leavesTheInterfaceIntact_data()
    {
        QTest::addColumn<QString>("loop");
        QTest::newRow("basic") << "QSG_RENDER_LOOP=basic";
        QTest::newRow("threaded") << "QSG_RENDER_LOOP=threaded";
    }

    // What the raw OpenGL of the panorama leaves behind must not show in the texts and pictures
    // that the scene graph draws above it, nor in those after it.
    void leavesTheInterfaceIntact()
    {
        QFETCH(QString, loop);
        PlayerProcess empty(PlayerStart{{}, {}, {loop}});
        // The logo comes with its own thread.
        QVERIFY(empty.window() != 0);
        QTest::qWait(1500);
        const QImage infoScreen = empty.screenshot();
        empty.terminate(SIGTERM);
        QCOMPARE(empty.waitForEnd(), 0);

        QSet<int> first;
        for (const char *display : {"normal", "split", "3d"}) {
            PlayerProcess player(
                PlayerStart{{m_file}, {QByteArray("output\\display=") + display}, {loop}});
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

            player.keys({"h", "ctrl+w"});
            // Glyphs land in another place of their texture, which moves a level here and there.
            const auto likeness = [&] {
                return PanoramaReference::compare(player.screenshot(), infoScreen).share;
            };
            QTRY_VERIFY_WITH_TIMEOUT(likeness() > 0.999, PlayerProcess::kPatienceMs);
            QCOMPARE(player.noise(), QString());
        }
    }

private:
    QTemporaryDir m_dir;
    const QString m_file = m_dir.filePath("sphere.png");
    const QImage m_source = PanoramaReference::testPanorama({1024, 512});
};

QTEST_MAIN(TestPanorama)
#include "tst_panorama.moc"
