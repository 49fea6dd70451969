// SPDX-License-Identifier: GPL-3.0-or-later
// The shaders on a real driver: all build without a word from it, and what they draw is what the
// geometry says, both as the builder writes them and in their cheap form.

#include "render/ShaderProgram.h"
#include "render/ShaderSpecialiser.h"
#include "render/VxShaderCodeBuilder.h"
#include "settings/VxSettings.h"
#include "tests/common/FakeContext.h"
#include "tests/common/PanoramaQuad.h"
#include "tests/settings/ScratchConfig.h"

#include <QMetaEnum>
#include <QOpenGLShaderProgram>
#include <QSet>
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

template <typename Enum> const char *nameOf(int value)
{
    return QMetaEnum::fromType<Enum>().valueToKey(value);
}

} // namespace

class tst_PanoramaPixels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void everyTextBuilds();
    void picture_data();
    void picture();
    void headsetIsRectilinear();
    void failureIsLogged();

private:
    QByteArray fragment(const PanoramaScene &wanted, bool hmd = false);
    void compare(const QImage &actual, const QImage &expected);

    ScratchConfig m_scratch;
    OffscreenContext m_gl;
    QScopedPointer<VxSettings> m_settings;
    FakeContext m_context;
    QScopedPointer<Builder> m_builder;
};

void tst_PanoramaPixels::initTestCase()
{
    QVERIFY(m_gl.isValid());
    m_settings.reset(new VxSettings(QStringLiteral("tst_panoramapixels")));
    m_settings->load();
    m_context.settingsObject = m_settings.data();
}

void tst_PanoramaPixels::init()
{
    m_builder.reset(new Builder(&m_context));
}

QByteArray tst_PanoramaPixels::fragment(const PanoramaScene &wanted, bool hmd)
{
    m_builder->setProjection(wanted.projection);
    m_builder->setProjectionSource(wanted.projectionSource);
    m_builder->setStereoMode(wanted.stereoMode);
    m_builder->setEffect(wanted.effect);
    m_builder->setRotationSource(wanted.rotationSource);
    m_builder->setInvertedColors(wanted.invertedColors);
    return m_builder->fragmentShaderSource(hmd, wanted.overlay, wanted.flipY);
}

void tst_PanoramaPixels::compare(const QImage &actual, const QImage &expected)
{
    QImage difference;
    const auto result = PanoramaReference::compare(actual, expected, 8, &difference);
    if (result.share >= 0.99)
        return;
    const QString stem = QDir::temp().filePath(QString::fromLatin1(QTest::currentDataTag()));
    actual.save(stem + "-actual.png");
    expected.save(stem + "-expected.png");
    difference.save(stem + "-difference.png");
    QFAIL(qPrintable(QStringLiteral("%1 of the pixels are near, worst %2 at %3,%4; see %5-*.png")
                         .arg(result.share)
                         .arg(result.worst)
                         .arg(result.worstAt.x())
                         .arg(result.worstAt.y())
                         .arg(stem)));
}

// The whole product of modes; texts that several of its members share are built once.
void tst_PanoramaPixels::everyTextBuilds()
{
    QSet<QByteArray> seen;
    const auto build = [&seen](const ShaderTexts &texts) {
        if (seen.contains(texts.fragment))
            return;
        seen.insert(texts.fragment);
        QOpenGLShaderProgram program;
        bool good = program.addShaderFromSourceCode(QOpenGLShader::Vertex, texts.vertex)
            && program.addShaderFromSourceCode(QOpenGLShader::Fragment, texts.fragment)
            && program.link();
        QString log = program.log();
        for (const QOpenGLShader *shader : program.shaders())
            log += shader->log();
        good = good && log.isEmpty();
        if (!good)
            QFAIL(qPrintable(log + texts.fragment));
    };
    const QVector<UniformConstant> constants =
        ShaderSpecialiser::gradingConstants() + ShaderSpecialiser::fullSphereConstants();
    for (int projection = 0; projection <= Builder::LAST_VALUE_PROJECTION; ++projection) {
        for (int source = 0; source <= Builder::LAST_VALUE_INPUTPROJECTION; ++source) {
            for (int stereo = 0; stereo <= Builder::STEREO_AUTO; ++stereo) {
                for (int effect = 0; effect <= Builder::LAST_VALUE_EFFECT; ++effect) {
                    for (int bits = 0; bits < 32; ++bits) {
                        PanoramaScene wanted = scene(source, projection);
                        wanted.stereoMode = stereo;
                        wanted.effect = effect;
                        wanted.rotationSource = (bits & 1) != 0 ? 2 : 0;
                        wanted.invertedColors = (bits & 2) != 0;
                        wanted.overlay = (bits & 4) != 0;
                        wanted.flipY = (bits & 8) != 0;
                        build({Builder::vertexShaderSource(), fragment(wanted, (bits & 16) != 0)});
                        if (QTest::currentTestFailed())
                            return;
                    }
                }
            }
        }
    }
    // 21 rays with sources, 2 flips, then 8 effects with 5 stereo layouts and 2 orders of the
    // channels, or with the overlay.
    QCOMPARE(seen.size(), 21 * 2 * 8 * (5 * 2 + 1));
    const QSet<QByteArray> written = seen;
    int cheap = 0;
    for (const QByteArray &text : written) {
        // One of each ray, source and effect; the other sections are as before.
        if (text.contains("uEye ==") || text.contains(".bgr") || text.contains("1.0 - a.y;if"))
            continue;
        build(ShaderSpecialiser::streamline(
            {Builder::vertexShaderSource(), ShaderSpecialiser::specialise(text, constants)}, true));
        ++cheap;
        if (QTest::currentTestFailed())
            return;
    }
    QVERIFY(cheap > 0);
}

void tst_PanoramaPixels::picture_data()
{
    QTest::addColumn<PanoramaScene>("wanted");
    const auto add = [](const QString &name, const PanoramaScene &wanted) {
        QTest::newRow(qPrintable(name)) << wanted;
    };

    for (int source = 0; source < Builder::AUTO; ++source)
        for (int projection = 0; projection < Builder::LAST_VALUE_PROJECTION; ++projection)
            for (const Camera &camera : kCameras)
                add(QStringLiteral("%1 as %2 at %3 %4 %5 degrees")
                        .arg(nameOf<Builder::InputProjection>(source),
                             nameOf<Builder::ShaderProjection>(projection))
                        .arg(camera.yaw)
                        .arg(camera.pitch)
                        .arg(camera.fov),
                    scene(source, projection, camera));

    for (const double fov : {120.0, 180.0, 250.0})
        for (const int projection : {Builder::TAVRO, Builder::LITTLE_PLANET, Builder::FISHEYE})
            add(QStringLiteral("%1 at %2 degrees")
                    .arg(nameOf<Builder::ShaderProjection>(projection))
                    .arg(fov),
                scene(Builder::EQUIRECTANGULAR, projection, {20, 30, 10, fov}));

    for (int stereo = 1; stereo <= Builder::STEREO_AUTO; ++stereo) {
        PanoramaScene wanted = scene(Builder::EQUIRECTANGULAR, Builder::TAVRO);
        wanted.stereoMode = stereo;
        add(QStringLiteral("%1, first eye").arg(nameOf<Builder::StereoMode>(stereo)), wanted);
        wanted.splitView = true;
        wanted.item = {322, 120};
        add(QStringLiteral("%1, both eyes").arg(nameOf<Builder::StereoMode>(stereo)), wanted);
    }

    for (int effect = 1; effect < Builder::LAST_VALUE_EFFECT; ++effect) {
        PanoramaScene wanted = scene(Builder::EQUIRECTANGULAR, Builder::FISHEYE, {-20, 20, 0, 170});
        wanted.effect = effect;
        add(nameOf<Builder::ShaderEffect>(effect), wanted);
    }

    PanoramaScene wanted = scene(Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {20, 10, 15, 110});
    wanted.yawMin = -60 * kDegree;
    wanted.yawMax = 80 * kDegree;
    wanted.pitchMin = -30 * kDegree;
    wanted.pitchMax = 40 * kDegree;
    add(QStringLiteral("a part of the sphere"), wanted);
    wanted.projection = Builder::FISHEYE;
    wanted.fov = 200;
    add(QStringLiteral("a part of the sphere in a fisheye"), wanted);

    wanted = scene(Builder::EQUIRECTANGULAR, Builder::TAVRO);
    wanted.item = {129, 190};
    add(QStringLiteral("a tall view"), wanted);
    wanted.item = {323, 90};
    wanted.splitView = true;
    wanted.stereoMode = Builder::STEREO_3D_SIDEBYSIDE;
    add(QStringLiteral("split view, odd width"), wanted);
    wanted.tv3dView = true;
    add(QStringLiteral("3D television"), wanted);
    wanted.item = {160, 90};
    wanted.devicePixelRatio = 2;
    wanted.effect = Builder::TV;
    add(QStringLiteral("3D television at two pixels a unit, with scan lines"), wanted);

    wanted = scene(Builder::EQUIRECTANGULAR, Builder::LITTLE_PLANET);
    wanted.invertedColors = true;
    wanted.flipY = true;
    add(QStringLiteral("blue in the red channel, upside down"), wanted);
    wanted = scene(Builder::FISHEYE_CIRCLE, Builder::RECTILINEAR);
    wanted.rotationSource = 2;
    add(QStringLiteral("fisheye lens turned to the left"), wanted);
    wanted = scene(Builder::AUTO, Builder::LAST_VALUE_PROJECTION);
    add(QStringLiteral("modes out of range"), wanted);
    wanted = scene(Builder::STANDARD, Builder::TAVRO, {-170, 80, 40, 70});
    add(QStringLiteral("a flat picture at its lower edge and seam"), wanted);

    wanted = scene(Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {30, 20, 10, 130});
    wanted.overlay = true;
    wanted.flipY = true;
    add(QStringLiteral("the interface as a plane"), wanted);
    wanted.yaw = 2;
    add(QStringLiteral("the interface at the edge of the view"), wanted);
}

void tst_PanoramaPixels::picture()
{
    QFETCH(const PanoramaScene, wanted);
    const QImage source = PanoramaReference::testPanorama(sourceSize(wanted.projectionSource));
    const auto texture = textureFrom(source);
    const QByteArray text = fragment(wanted);
    PanoramaQuad written(text);
    QVERIFY(written.isValid());
    const QImage picture = written.picture(m_gl.functions(), wanted, texture->textureId());
    compare(picture, PanoramaReference::render(wanted, source));

    QVector<UniformConstant> constants = ShaderSpecialiser::gradingConstants();
    const bool fullSphere = ShaderSpecialiser::isFullSphere(
        float(wanted.yawMin), float(wanted.yawMax), float(wanted.pitchMin), float(wanted.pitchMax));
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
        cheap.picture(m_gl.functions(), wanted, texture->textureId()), picture, 8);
    QVERIFY2(same.share >= 0.998,
             qPrintable(QStringLiteral("%1 of the pixels are the same, worst "
                                       "%2 at %3,%4")
                            .arg(same.share)
                            .arg(same.worst)
                            .arg(same.worstAt.x())
                            .arg(same.worstAt.y())));
}

// Whatever the desktop shows.
void tst_PanoramaPixels::headsetIsRectilinear()
{
    const QImage source = PanoramaReference::testPanorama(sourceSize(Builder::EQUIRECTANGULAR));
    const auto texture = textureFrom(source);
    PanoramaScene wanted = scene(Builder::EQUIRECTANGULAR, Builder::LITTLE_PLANET);
    PanoramaQuad quad(fragment(wanted, true));
    QVERIFY(quad.isValid());
    const QImage picture = quad.picture(m_gl.functions(), wanted, texture->textureId());
    wanted.projection = Builder::RECTILINEAR;
    compare(picture, PanoramaReference::render(wanted, source));
}

void tst_PanoramaPixels::failureIsLogged()
{
    static QStringList logged;
    logged.clear();
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
    QVERIFY2(logged.value(0).contains(QLatin1String("broken panorama")),
             qPrintable(logged.join('\n')));
    QVERIFY2(logged.value(0).contains(QLatin1String("nonsense")), qPrintable(logged.join('\n')));
    QVERIFY2(logged.contains(QLatin1String("2:    gl_FragColor = nonsense;")),
             qPrintable(logged.join('\n')));
}

QTEST_MAIN(tst_PanoramaPixels)
#include "tst_panoramapixels.moc"
