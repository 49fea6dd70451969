// SPDX-License-Identifier: GPL-3.0-or-later
// The builder's texts against pieces that are kept apart from the code, and its modes.

#include "app/VxContext.h"
#include "render/ShaderSpecialiser.h"
#include "render/VxShaderCodeBuilder.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"
#include "tests/common/FakeContext.h"
#include "tests/settings/ScratchConfig.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <limits>

using Builder = VxShaderCodeBuilder;

namespace {

/// The three arguments of a fragment shader.
struct Arguments
{
    bool hmd;
    bool overlay;
    bool flipY;
};

/// Numbers below, in and above the range of an enumeration that ends before `end`.
QVector<int> around(int end)
{
    QVector<int> values{-1};
    for (int value = 0; value <= end + 1; ++value)
        values << value;
    return values;
}

} // namespace

class tst_ShaderCodeBuilder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void vertexAndCopy();
    void everyFragment();
    void startsFromTheSettings();
    void signalsChangesOnly();
    void nextEffectWraps();
    void nextProjectionGoesThroughTheSettings_data();
    void nextProjectionGoesThroughTheSettings();
    void switchesEyes_data();
    void switchesEyes();
    void hostPluginFlipsAndSwaps();
    void lensOfTheAdaptiveProjection_data();
    void lensOfTheAdaptiveProjection();
    void specialisesDeclaredUniformsOnly();

private:
    QByteArray piece(const QString &name) const
    {
        if (!m_pieces.contains(name))
            QTest::qFail(qPrintable("no piece " + name), __FILE__, __LINE__);
        return m_pieces.value(name).toString().toUtf8();
    }

    QByteArray optional(const QString &name) const
    {
        return m_pieces.value(name).toString().toUtf8();
    }

    /// The text up to the source's coordinates, those coordinates, and the text after them.
    QVector<QByteArray> expected(const Arguments &arguments) const;

    ScratchConfig m_scratch;
    QJsonObject m_pieces;
    QScopedPointer<VxSettings> m_settings;
    FakeContext m_context;
    QScopedPointer<Builder> m_builder;
};

void tst_ShaderCodeBuilder::initTestCase()
{
    QFile file(QStringLiteral(TAVRO_SOURCE_DIR "/tests/data/panorama_shader.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_pieces = QJsonDocument::fromJson(file.readAll()).object();
    QVERIFY(!m_pieces.isEmpty());
}

void tst_ShaderCodeBuilder::init()
{
    m_settings.reset(new VxSettings(QStringLiteral("tst_shadercodebuilder")));
    m_settings->load();
    m_context = FakeContext();
    m_context.settingsObject = m_settings.data();
    m_builder.reset(new Builder(&m_context));
}

QVector<QByteArray> tst_ShaderCodeBuilder::expected(const Arguments &arguments) const
{
    const Builder &b = *m_builder;
    QByteArray before =
        piece("header") + piece("declarations") + piece("functions") + piece("mapBegin");
    if (b.projectionSource() != Builder::STANDARD) {
        if (arguments.hmd)
            before += piece("ray1hmd");
        else if (b.projection() >= 1 && b.projection() <= 3)
            before += piece(QStringLiteral("ray%1").arg(b.projection()));
        else
            before += piece("ray0");
    }

    QByteArray source;
    switch (b.projectionSource()) {
    case 1:
        source = piece("source1");
        break;
    case 2:
        source = piece("cubeBegin");
        break;
    case 3:
        source = b.rotationSource() == 2 ? piece("fisheyeTurned") : QByteArray();
        source += piece("source3");
        break;
    default:
        source = piece("source0");
    }

    QByteArray after = piece("mapEnd") + piece("mainBegin");
    if (arguments.flipY)
        after += piece("flipY");
    if (arguments.overlay)
        after += piece("overlay");
    after += piece("reject");
    if (arguments.overlay)
        after += piece("sampleOverlay");
    else
        after += optional(QStringLiteral("stereo%1").arg(b.stereoMode())) + piece("opaque")
            + piece(b.invertedColors() ? "sampleSwapped" : "sample");
    after += piece("guard") + piece("colorMatrix") + piece("grading")
        + optional(QStringLiteral("effect%1").arg(b.effect())) + piece("vignette") + piece("end");
    return {before, source, after};
}

void tst_ShaderCodeBuilder::vertexAndCopy()
{
    QCOMPARE(Builder::vertexShaderSource(), piece("vertex"));
    QCOMPARE(m_builder->copyFragmentSource(),
             piece("copyBegin") + piece("copy") + piece("copyEnd"));
    m_builder->setInvertedColors(true);
    QCOMPARE(m_builder->copyFragmentSource(),
             piece("copyBegin") + piece("copySwapped") + piece("copyEnd"));
}

// Every combination of modes and arguments, and numbers outside the enumerations.
void tst_ShaderCodeBuilder::everyFragment()
{
    const auto check = [this](const Arguments &arguments) {
        const QByteArray text =
            m_builder->fragmentShaderSource(arguments.hmd, arguments.overlay, arguments.flipY);
        const QVector<QByteArray> parts = expected(arguments);
        // The inside of the cube's faces is judged by its pixels.
        if (m_builder->projectionSource() == Builder::CUBEMAP)
            return text.startsWith(parts[0] + parts[1]) && text.endsWith(parts[2])
                && text.count("return uv;}") == 1 && text.contains(piece("cubeExpand"))
                && text.contains(piece("cubeOffset"));
        return text == parts[0] + parts[1] + parts[2];
    };
    for (const int projection : around(Builder::LAST_VALUE_PROJECTION)) {
        m_builder->setProjection(projection);
        for (const int source : around(Builder::LAST_VALUE_INPUTPROJECTION)) {
            m_builder->setProjectionSource(source);
            for (const int stereo : around(Builder::STEREO_AUTO)) {
                m_builder->setStereoMode(stereo);
                for (const int effect : around(Builder::LAST_VALUE_EFFECT)) {
                    m_builder->setEffect(effect);
                    for (int bits = 0; bits < 32; ++bits) {
                        m_builder->setInvertedColors((bits & 8) != 0);
                        m_builder->setRotationSource((bits & 16) != 0 ? 2 : 0);
                        const Arguments arguments{(bits & 1) != 0, (bits & 2) != 0,
                                                  (bits & 4) != 0};
                        if (!check(arguments))
                            QFAIL(qPrintable(QStringLiteral("projection %1 source %2 stereo %3 "
                                                            "effect %4 bits %5")
                                                 .arg(projection)
                                                 .arg(source)
                                                 .arg(stereo)
                                                 .arg(effect)
                                                 .arg(bits)));
                    }
                }
            }
        }
    }
}

void tst_ShaderCodeBuilder::startsFromTheSettings()
{
    m_settings->set(VxSettingsKeys::kOutputProjection.instance, 3);
    m_settings->set(VxSettingsKeys::kInputStereoscopy.instance, 2);
    m_settings->set(VxSettingsKeys::kInputProjection.instance, 1);
    const Builder builder(&m_context);
    QCOMPARE(builder.projection(), 3);
    QCOMPARE(builder.stereoMode(), 2);
    QCOMPARE(builder.projectionSource(), 1);
    QCOMPARE(builder.effect(), 0);
    QVERIFY(!builder.invertedColors());
}

void tst_ShaderCodeBuilder::signalsChangesOnly()
{
    const QVector<QPair<const char *, QVariant>> changes{
        {"hmdMode", true},        {"effect", 3},
        {"projection", 2},        {"stereoMode", 4},
        {"rotationSource", 2},    {"projectionSource", 3},
        {"invertedColors", true}, {"texturePixelFormat", QStringLiteral("I420")},
    };
    for (const auto &[name, value] : changes) {
        const QMetaProperty property =
            m_builder->metaObject()->property(m_builder->metaObject()->indexOfProperty(name));
        QSignalSpy spy(m_builder.data(), property.notifySignal());
        QVERIFY2(property.write(m_builder.data(), value), name);
        QCOMPARE(property.read(m_builder.data()), value);
        QVERIFY2(property.write(m_builder.data(), value), name);
        QCOMPARE(spy.count(), 1);
    }
}

void tst_ShaderCodeBuilder::nextEffectWraps()
{
    m_builder->setEffect(Builder::YELLOW_ONLY);
    m_builder->setNextEffect();
    QCOMPARE(m_builder->effect(), int(Builder::BLUE_ONLY));
    m_builder->setNextEffect();
    QCOMPARE(m_builder->effect(), int(Builder::NO_EFFECT));
    m_builder->setEffect(99);
    m_builder->setNextEffect();
    QCOMPARE(m_builder->effect(), int(Builder::NO_EFFECT));
}

void tst_ShaderCodeBuilder::nextProjectionGoesThroughTheSettings_data()
{
    QTest::addColumn<int>("projection");
    QTest::addColumn<int>("next");
    QTest::newRow("adaptive to rectilinear") << int(Builder::TAVRO) << int(Builder::RECTILINEAR);
    QTest::newRow("fisheye back to the first") << int(Builder::FISHEYE) << int(Builder::TAVRO);
    QTest::newRow("beyond the last") << 17 << int(Builder::TAVRO);
}

void tst_ShaderCodeBuilder::nextProjectionGoesThroughTheSettings()
{
    QFETCH(const int, projection);
    QFETCH(const int, next);
    m_settings->set(VxSettingsKeys::kOutputProjection.instance, 77);
    m_builder->setProjection(projection);
    m_builder->setNextProjection();
    QCOMPARE(m_settings->get(VxSettingsKeys::kOutputProjection.instance).toInt(), next);
    // The controller writes the property when it sees the setting.
    QCOMPARE(m_builder->projection(), projection);
}

void tst_ShaderCodeBuilder::switchesEyes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("switched");
    const int pairs[][2] = {{0, 0}, {1, 3}, {2, 4}, {3, 1}, {4, 2}, {5, 5}, {-1, -1}, {6, 6}};
    for (const auto &[mode, switched] : pairs)
        QTest::addRow("stereo mode %d", mode) << mode << switched;
}

void tst_ShaderCodeBuilder::switchesEyes()
{
    QFETCH(const int, mode);
    QFETCH(const int, switched);
    m_builder->setStereoMode(mode);
    QSignalSpy settings(m_settings.data(), &VxSettings::settingsChanged);
    m_builder->switchEyeStereoscopy();
    QCOMPARE(m_builder->stereoMode(), switched);
    QCOMPARE(settings.count(), 0);
}

void tst_ShaderCodeBuilder::hostPluginFlipsAndSwaps()
{
    m_context.options.insert(QStringLiteral("adobeplugin"), false);
    m_builder->fragmentShaderSource(false, false, false);
    QVERIFY(!m_builder->invertedColors());

    m_context.options.insert(QStringLiteral("adobeplugin"), true);
    QSignalSpy changed(m_builder.data(), &Builder::invertedColorsChanged);
    const QByteArray text = m_builder->fragmentShaderSource(false, false, false);
    QVERIFY(m_builder->invertedColors());
    QCOMPARE(changed.count(), 0);
    const QVector<QByteArray> parts = expected({false, false, true});
    QCOMPARE(text, parts[0] + parts[1] + parts[2]);
    QVERIFY(text.contains(piece("flipY")) && text.contains(piece("sampleSwapped")));
}

void tst_ShaderCodeBuilder::lensOfTheAdaptiveProjection_data()
{
    QTest::addColumn<float>("fov");
    QTest::addColumn<double>("distance");
    QTest::addColumn<double>("scale");
    QTest::newRow("narrow: rectilinear") << 40.0F << 0.0 << std::tan(M_PI / 9);
    QTest::newRow("the last rectilinear") << 60.0F << 0.0 << std::tan(M_PI / 6);
    QTest::newRow("halfway") << 120.0F << 0.5 << 1.5 * std::sqrt(0.75) / (0.5 + 0.5);
    QTest::newRow("a quarter") << 90.0F << (1 - std::sqrt(0.5)) / 2
                               << (1 + (1 - std::sqrt(0.5)) / 2) / (1 + (std::sqrt(0.5) - 0.5));
    QTest::newRow("stereographic") << 180.0F << 1.0 << 2.0;
    QTest::newRow("wide: stereographic") << 240.0F << 1.0 << 2 * std::tan(M_PI / 3);
}

void tst_ShaderCodeBuilder::lensOfTheAdaptiveProjection()
{
    QFETCH(const float, fov);
    QFETCH(const double, distance);
    QFETCH(const double, scale);
    const ProjectionParameters lens = Builder::projectionParameters(fov);
    QVERIFY2(std::abs(double(lens.distance) - distance) < 1e-6,
             qPrintable(QString::number(double(lens.distance))));
    QVERIFY2(std::abs(double(lens.scale) - scale) < 2e-6,
             qPrintable(QString::number(double(lens.scale), 'g', 9)));
}

void tst_ShaderCodeBuilder::specialisesDeclaredUniformsOnly()
{
    const QByteArray text =
        "uniform float uTime;uniform float uTimeScale;uniform mat4 uColorMatrix;";
    const float tiny = 1.0e-7F;
    const QVector<float> matrix(16, 0.5F);
    const QByteArray special = ShaderSpecialiser::specialise(
        text, {{"uTime", {tiny}}, {"uColorMatrix", matrix}, {"uAbsent", {1}}});
    QVERIFY2(special.startsWith("const float uTime = float("), special.constData());
    QVERIFY2(special.contains("uniform float uTimeScale;const mat4 uColorMatrix = mat4(0.5, 0.5"),
             special.constData());
    const int begin = special.indexOf('(') + 1;
    QCOMPARE(special.mid(begin, special.indexOf(')') - begin).toFloat(), tiny);

    const float infinity = std::numeric_limits<float>::infinity();
    QCOMPARE(ShaderSpecialiser::specialise(
                 text, {{"uTime", {infinity}}, {"uTimeScale", {1, 2}}, {"uColorMatrix", {1}}}),
             text);

    const float pi = float(M_PI);
    QVERIFY(ShaderSpecialiser::isFullSphere(-pi, pi, -pi / 2, pi / 2));
    QVERIFY(!ShaderSpecialiser::isFullSphere(-pi, std::nextafter(pi, 0.0F), -pi / 2, pi / 2));
    QVERIFY(!ShaderSpecialiser::isFullSphere(-pi, pi, -pi / 2, 0));
}

QTEST_GUILESS_MAIN(tst_ShaderCodeBuilder)
#include "tst_shadercodebuilder.moc"
