// SPDX-License-Identifier: GPL-3.0-or-later
// What the shaders draw on a real driver is what the geometry says, both as the builder writes them
// and in their cheap form.

#include "render/ShaderProgram.h"
#include "render/ShaderSpecialiser.h"
#include "render/VxShaderCodeBuilder.h"
#include "settings/VxSettings.h"
#include "tests/common/FakeContext.h"
#include "tests/common/PanoramaQuad.h"
#include "tests/settings/ScratchConfig.h"

#include <QOpenGLShaderProgram>
#include <QTest>

using Builder = VxShaderCodeBuilder;

Q_DECLARE_METATYPE(PanoramaScene)

namespace {

constexpr double kDegree = M_PI / 180;

struct Camera
{
    double yaw; // degrees
    double pitch;
    double roll;
    double fov;
};

// Ahead; to the right and down; steeply up, rolled and wide; behind, over the poles.
constexpr Camera kCameras[] = {
    {0, 0, 0, 60}, {50, 25, 0, 90}, {-70, -65, 30, 130}, {170, 100, -110, 75}};

PanoramaScene scene(int source, int projection, const Camera &camera = kCameras[1])
{
    PanoramaScene result;
    result.item = {192, 128};
    result.projectionSource = source;
    result.projection = projection;
    result.yaw = camera.yaw * kDegree;
    result.pitch = camera.pitch * kDegree;
    result.roll = camera.roll * kDegree;
    result.fov = camera.fov;
    return result;
}

QSize sourceSize(int source)
{
    switch (source) {
    case Builder::CUBEMAP:
        return {768, 512};
    case Builder::FISHEYE_CIRCLE:
        return {512, 512};
    }
    return {1024, 512};
}

} // namespace

class tst_PanoramaPixels : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        QVERIFY(m_gl.isValid());
        m_settings.reset(new VxSettings(QStringLiteral("tst_panoramapixels")));
        m_settings->load();
        m_context.settingsObject = m_settings.data();
    }

    void init() { m_builder.reset(new Builder(&m_context)); }

    void picture_data()
    {
        QTest::addColumn<PanoramaScene>("wanted");
        const auto add = [](const QString &name, const PanoramaScene &wanted) {
            QTest::newRow(qPrintable(name)) << wanted;
        };
        for (int source = 0; source < Builder::AUTO; ++source)
            for (int projection = 0; projection < Builder::LAST_VALUE_PROJECTION; ++projection)
                for (const Camera &camera : kCameras)
                    add(QString("input %1 as %2 at %3 degrees")
                            .arg(source)
                            .arg(projection)
                            .arg(camera.fov),
                        scene(source, projection, camera));

        for (const double fov : {120.0, 180.0, 250.0})
            for (const int projection : {Builder::TAVRO, Builder::LITTLE_PLANET, Builder::FISHEYE})
                add(QString("output %1 at %2 degrees").arg(projection).arg(fov),
                    scene(Builder::EQUIRECTANGULAR, projection, {20, 30, 10, fov}));

        for (int stereo = 1; stereo <= Builder::STEREO_AUTO; ++stereo) {
            PanoramaScene wanted = scene(Builder::EQUIRECTANGULAR, Builder::TAVRO);
            wanted.stereoMode = stereo;
            wanted.splitView = true;
            wanted.item = {322, 120};
            add(QString("stereo %1").arg(stereo), wanted);
        }

        for (int effect = 1; effect < Builder::LAST_VALUE_EFFECT; ++effect) {
            PanoramaScene wanted =
                scene(Builder::EQUIRECTANGULAR, Builder::FISHEYE, {-20, 20, 0, 170});
            wanted.effect = effect;
            add(QString("effect %1").arg(effect), wanted);
        }

        PanoramaScene wanted =
            scene(Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {20, 10, 15, 110});
        wanted.yawMin = -60 * kDegree;
        wanted.yawMax = 80 * kDegree;
        wanted.pitchMin = -30 * kDegree;
        wanted.pitchMax = 40 * kDegree;
        add("a part of the sphere", wanted);

        wanted = scene(Builder::EQUIRECTANGULAR, Builder::TAVRO);
        wanted.item = {129, 190};
        add("a tall view", wanted);
        wanted.splitView = true;
        wanted.stereoMode = Builder::STEREO_3D_SIDEBYSIDE;
        add("split view, odd width", wanted);
        wanted.tv3dView = true;
        wanted.item = {160, 90};
        wanted.devicePixelRatio = 2;
        wanted.effect = Builder::TV;
        add("3D television at two pixels a unit, with scan lines", wanted);

        wanted = scene(Builder::EQUIRECTANGULAR, Builder::LITTLE_PLANET);
        wanted.invertedColors = true;
        wanted.flipY = true;
        add("blue in the red channel, upside down", wanted);
        wanted = scene(Builder::FISHEYE_CIRCLE, Builder::RECTILINEAR);
        wanted.rotationSource = 2;
        add("fisheye lens turned to the left", wanted);
        add("modes out of range", scene(Builder::AUTO, Builder::LAST_VALUE_PROJECTION));
        add("a flat picture at its lower edge and seam",
            scene(Builder::STANDARD, Builder::TAVRO, {-170, 80, 40, 70}));

        wanted = scene(Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {30, 20, 10, 130});
        wanted.overlay = true;
        wanted.flipY = true;
        add("the interface as a plane", wanted);
        wanted.yaw = 2;
        add("the interface at the edge of the view", wanted);
    }

    void picture()
    {
        QFETCH(const PanoramaScene, wanted);
        const QImage source = PanoramaReference::testPanorama(sourceSize(wanted.projectionSource));
        const auto texture = textureFrom(source);
        const QByteArray text = fragment(wanted);
        PanoramaQuad written(text);
        QVERIFY(written.isValid());
        const QImage picture = written.picture(m_gl.functions(), wanted, texture->textureId());
        const auto right =
            PanoramaReference::compare(picture, PanoramaReference::render(wanted, source));
        QVERIFY2(right.share >= 0.99, right.text().constData());

        QVector<UniformConstant> constants = ShaderSpecialiser::gradingConstants();
        const bool fullSphere =
            ShaderSpecialiser::isFullSphere(float(wanted.yawMin), float(wanted.yawMax),
                                            float(wanted.pitchMin), float(wanted.pitchMax));
        if (fullSphere)
            constants += ShaderSpecialiser::fullSphereConstants();
        const ShaderTexts cheapTexts = ShaderSpecialiser::streamline(
            {Builder::vertexShaderSource(), ShaderSpecialiser::specialise(text, constants)},
            fullSphere);
        QVERIFY(cheapTexts.fragment != text);
        PanoramaQuad cheap(cheapTexts.fragment, cheapTexts.vertex);
        QVERIFY(cheap.isValid());
        // The shorter series are nearer to the mathematics than those of some drivers.
        const auto same = PanoramaReference::compare(
            cheap.picture(m_gl.functions(), wanted, texture->textureId()), picture);
        QVERIFY2(same.share >= 0.998, same.text().constData());
    }

    void failureIsLogged()
    {
        static QStringList logged;
        const QtMessageHandler previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &context, const QString &message) {
                if (qstrcmp(context.category, "tavro.shader") == 0)
                    logged << message;
            });
        const QOpenGLShaderProgram *program =
            ShaderProgram::build("broken panorama", Builder::vertexShaderSource(),
                                 "void main() {\n   gl_FragColor = nonsense;\n}\n");
        qInstallMessageHandler(previous);
        QVERIFY(!program);
        // The name, the driver's words, the numbered source.
        QVERIFY2(logged[0].contains("broken panorama") && logged[0].contains("nonsense")
                     && logged.contains("2:    gl_FragColor = nonsense;"),
                 qPrintable(logged.join('\n')));
    }

private:
    QByteArray fragment(const PanoramaScene &wanted)
    {
        m_builder->setProjection(wanted.projection);
        m_builder->setProjectionSource(wanted.projectionSource);
        m_builder->setStereoMode(wanted.stereoMode);
        m_builder->setEffect(wanted.effect);
        m_builder->setRotationSource(wanted.rotationSource);
        m_builder->setInvertedColors(wanted.invertedColors);
        return m_builder->fragmentShaderSource(false, wanted.overlay, wanted.flipY);
    }

    ScratchConfig m_scratch;
    OffscreenContext m_gl;
    QScopedPointer<VxSettings> m_settings;
    FakeContext m_context;
    QScopedPointer<Builder> m_builder;
};

QTEST_MAIN(tst_PanoramaPixels)
#include "tst_panoramapixels.moc"
