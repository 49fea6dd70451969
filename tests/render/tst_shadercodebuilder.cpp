// SPDX-License-Identifier: GPL-3.0-or-later
// The builder's texts against pieces that are kept apart from the code, and its modes.

#include "render/ShaderSpecialiser.h"
#include "render/VxShaderCodeBuilder.h"
#include "settings/VxSettings.h"
#include "settings/VxSettingsKeys.h"
#include "tests/common/FakeContext.h"
#include "tests/common/PanoramaQuad.h"
#include "tests/settings/ScratchConfig.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QOpenGLShaderProgram>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <functional>
#include <iterator>
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

} // namespace

class tst_ShaderCodeBuilder : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        QFile file(QStringLiteral(TAVRO_SOURCE_DIR "/tests/data/panorama_shader.json"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        m_pieces = QJsonDocument::fromJson(file.readAll()).object();
        QVERIFY(!m_pieces.isEmpty());
    }

    void init()
    {
        m_settings.reset(new VxSettings(QStringLiteral("tst_shadercodebuilder")));
        m_settings->load();
        m_context = FakeContext();
        m_context.settingsObject = m_settings.data();
        m_builder.reset(new Builder(&m_context));
    }

    void vertexAndCopy()
    {
        QCOMPARE(Builder::vertexShaderSource(), piece("vertex"));
        QCOMPARE(m_builder->copyFragmentSource(),
                 piece("copyBegin") + piece("copy") + piece("copyEnd"));
        m_builder->setInvertedColors(true);
        QCOMPARE(m_builder->copyFragmentSource(),
                 piece("copyBegin") + piece("copySwapped") + piece("copyEnd"));
    }

    // Every combination of modes and arguments, and numbers outside the enumerations.
    void everyFragment()
    {
        struct Mode
        {
            void (Builder::*set)(int);
            int end; // of its enumeration
        };

        const Mode modes[] = {{&Builder::setProjection, Builder::LAST_VALUE_PROJECTION},
                              {&Builder::setProjectionSource, Builder::LAST_VALUE_INPUTPROJECTION},
                              {&Builder::setStereoMode, Builder::STEREO_AUTO},
                              {&Builder::setEffect, Builder::LAST_VALUE_EFFECT}};
        const std::function<void(size_t)> walk = [&](size_t mode) {
            if (mode == std::size(modes))
                return checkFragments();
            for (int value = -1; value <= modes[mode].end + 1; ++value) {
                (m_builder.data()->*modes[mode].set)(value);
                walk(mode + 1);
                if (QTest::currentTestFailed())
                    return;
            }
        };
        walk(0);
    }

    // Without a word from the driver.
    void everyTextBuilds()
    {
        const auto build = [](const ShaderTexts &texts) {
            QOpenGLShaderProgram program;
            const bool isLinked =
                program.addShaderFromSourceCode(QOpenGLShader::Vertex, texts.vertex)
                && program.addShaderFromSourceCode(QOpenGLShader::Fragment, texts.fragment)
                && program.link();
            QString log = program.log();
            for (const QOpenGLShader *shader : program.shaders())
                log += shader->log();
            QVERIFY2(isLinked && log.isEmpty(),
                     qPrintable(log + QString::fromLatin1(texts.fragment)));
        };
        const OffscreenContext context;
        QVERIFY(context.isValid());
        // 21 rays with sources, 2 flips, then 8 effects with 5 stereo layouts and 2 orders of the
        // channels, or with the overlay.
        QCOMPARE(m_texts.size(), 21 * 2 * 8 * (5 * 2 + 1));
        int cheap = 0;
        for (const QByteArray &text : qAsConst(m_texts)) {
            build({Builder::vertexShaderSource(), text});
            // One of each ray, source and effect; the other sections are as before.
            if (!text.contains("uEye ==") && !text.contains(".bgr")
                && !text.contains("1.0 - a.y;if")) {
                const auto constants = ShaderSpecialiser::gradingConstants()
                    + ShaderSpecialiser::fullSphereConstants();
                build(ShaderSpecialiser::streamline(
                    {Builder::vertexShaderSource(), ShaderSpecialiser::specialise(text, constants)},
                    true));
                ++cheap;
            }
            if (QTest::currentTestFailed())
                return;
        }
        QVERIFY(cheap > 0);
    }

    void nextModesWrap()
    {
        for (const auto &[effect, next] : {std::pair(6, 7), std::pair(7, 0), std::pair(99, 0)}) {
            m_builder->setEffect(effect);
            m_builder->setNextEffect();
            QCOMPARE(m_builder->effect(), next);
        }
        const QString key = VxSettingsKeys::kOutputProjection.instance;
        for (const auto &[projection, next] :
             {std::pair(0, 1), std::pair(3, 0), std::pair(17, 0)}) {
            m_settings->set(key, 77);
            m_builder->setProjection(projection);
            m_builder->setNextProjection();
            QCOMPARE(m_settings->get(key).toInt(), next);
            // The controller writes the property when it sees the setting.
            QCOMPARE(m_builder->projection(), projection);
        }
    }

    void switchesEyes()
    {
        const int pairs[][2] = {{0, 0}, {1, 3}, {2, 4}, {3, 1}, {4, 2}, {5, 5}};
        for (const auto &[mode, switched] : pairs) {
            m_builder->setStereoMode(mode);
            m_builder->switchEyeStereoscopy();
            QCOMPARE(m_builder->stereoMode(), switched);
        }
    }

    void hostPluginFlipsAndSwaps()
    {
        m_context.options.insert(QStringLiteral("adobeplugin"), true);
        QSignalSpy changed(m_builder.data(), &Builder::invertedColorsChanged);
        const QByteArray text = m_builder->fragmentShaderSource(false, false, false);
        QVERIFY(m_builder->invertedColors());
        QCOMPARE(changed.count(), 0);
        QVERIFY(text.contains(piece("flipY")) && text.contains(piece("sampleSwapped")));
    }

    void specialisesDeclaredUniformsOnly()
    {
        const QByteArray text =
            "uniform float uTime;uniform float uTimeScale;uniform mat4 uColorMatrix;";
        const float tiny = 1.0e-7F;
        const QVector<float> matrix(16, 0.5F);
        const QByteArray special = ShaderSpecialiser::specialise(
            text, {{"uTime", {tiny}}, {"uColorMatrix", matrix}, {"uAbsent", {1}}});
        QVERIFY2(special.startsWith("const float uTime = float("), special.constData());
        QVERIFY2(
            special.contains("uniform float uTimeScale;const mat4 uColorMatrix = mat4(0.5, 0.5"),
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

private:
    /// Compares the texts of the present modes, for all arguments.
    void checkFragments()
    {
        const Builder &b = *m_builder;
        for (int bits = 0; bits < 32; ++bits) {
            m_builder->setInvertedColors((bits & 8) != 0);
            m_builder->setRotationSource((bits & 16) != 0 ? 2 : 0);
            const Arguments arguments{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0};
            const QByteArray text =
                m_builder->fragmentShaderSource(arguments.hmd, arguments.overlay, arguments.flipY);
            m_texts.insert(text);
            const QVector<QByteArray> parts = expected(arguments);
            // The inside of the cube's faces is judged by its pixels.
            const bool isRight = b.projectionSource() == Builder::CUBEMAP
                ? text.startsWith(parts[0] + parts[1]) && text.endsWith(parts[2])
                    && text.count("return uv;}") == 1 && text.contains(piece("cubeExpand"))
                    && text.contains(piece("cubeOffset"))
                : text == parts[0] + parts[1] + parts[2];
            QVERIFY2(isRight,
                     qPrintable(QString("projection %1 source %2 stereo %3 effect %4 bits %5")
                                    .arg(b.projection())
                                    .arg(b.projectionSource())
                                    .arg(b.stereoMode())
                                    .arg(b.effect())
                                    .arg(bits)));
        }
    }

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
    QVector<QByteArray> expected(const Arguments &arguments) const
    {
        const Builder &b = *m_builder;
        QByteArray before =
            piece("header") + piece("declarations") + piece("functions") + piece("mapBegin");
        const bool hasOwnRay = b.projection() >= 1 && b.projection() <= 3;
        if (b.projectionSource() != Builder::STANDARD)
            before += piece(arguments.hmd ? "ray1hmd"
                                          : QString("ray%1").arg(hasOwnRay ? b.projection() : 0));

        QByteArray source;
        if (b.projectionSource() == Builder::CUBEMAP)
            source = piece("cubeBegin");
        else if (b.projectionSource() == Builder::STANDARD)
            source = piece("source1");
        else if (b.projectionSource() == Builder::FISHEYE_CIRCLE)
            source = (b.rotationSource() == 2 ? piece("fisheyeTurned") : "") + piece("source3");
        else
            source = piece("source0");

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
            + optional(QStringLiteral("effect%1").arg(b.effect())) + piece("vignette")
            + piece("end");
        return {before, source, after};
    }

    ScratchConfig m_scratch;
    QJsonObject m_pieces;
    QSet<QByteArray> m_texts; // of all combinations
    QScopedPointer<VxSettings> m_settings;
    FakeContext m_context;
    QScopedPointer<Builder> m_builder;
};

QTEST_MAIN(tst_ShaderCodeBuilder)
#include "tst_shadercodebuilder.moc"
