// SPDX-License-Identifier: GPL-3.0-or-later
// What the panorama costs: its quad against a quad of the same size that only copies the texture,
// for every input and output projection. Times are taken in turn and compared within one run, so
// that the machine and what else it does cancel out.

#include "render/ShaderSpecialiser.h"
#include "settings/VxSettings.h"
#include "tests/common/FakeContext.h"
#include "tests/common/PanoramaQuad.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMetaEnum>
#include <QOpenGLFramebufferObject>
#include <QTextStream>

#include <algorithm>
#include <vector>

namespace {

const QByteArray kPassThrough =
    "#ifdef GL_ES \n"
    "precision highp float; \n"
    "#endif \n"
    "varying highp vec4 texCoord;"
    "uniform sampler2D uSampler;"
    "void main(){gl_FragColor = texture2D(uSampler,texCoord.xy);}";

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The usual shape of each source, 2048 rows high.
QSize sourceSize(int input)
{
    switch (input) {
    case VxShaderCodeBuilder::CUBEMAP:
        return {3072, 2048};
    case VxShaderCodeBuilder::FISHEYE_CIRCLE:
        return {2048, 2048};
    }
    return {4096, 2048};
}

double timeOf(QOpenGLFunctions *gl, PanoramaQuad &quad, const PanoramaScene &scene, GLuint texture,
              int frames)
{
    quad.setUniforms(scene, 0);
    gl->glFinish();
    QElapsedTimer timer;
    timer.start();
    for (int frame = 0; frame < frames; ++frame) {
        quad.draw(gl, texture);
        gl->glFinish();
    }
    return double(timer.nsecsElapsed()) / 1e6 / frames;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption rounds("rounds", "Times each program is measured.", "n", "21");
    const QCommandLineOption only("size", "Measures one size only.", "WxH");
    parser.addOptions({rounds, only});
    parser.addHelpOption();
    parser.process(application);

    QTextStream out(stdout);
    OffscreenContext context;
    if (!context.isValid()) {
        out << "no OpenGL context\n";
        return 1;
    }
    QOpenGLFunctions *gl = context.functions();
    out << reinterpret_cast<const char *>(gl->glGetString(GL_RENDERER)) << "\n"
        << "size input output: ms of the copy; times the copy: as written, specialised\n";

    VxSettings settings(QStringLiteral("bench"));
    FakeContext fake;
    fake.settingsObject = &settings;
    VxShaderCodeBuilder builder(&fake);
    const QVector<UniformConstant> constants =
        ShaderSpecialiser::gradingConstants() + ShaderSpecialiser::fullSphereConstants();
    const QMetaEnum inputs = QMetaEnum::fromType<VxShaderCodeBuilder::InputProjection>();
    const QMetaEnum outputs = QMetaEnum::fromType<VxShaderCodeBuilder::ShaderProjection>();

    double worst = 0;
    for (const QSize size : {QSize(1280, 720), QSize(1920, 1080), QSize(3840, 2160)}) {
        const QString name = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
        if (parser.isSet(only) && parser.value(only) != name)
            continue;
        QOpenGLFramebufferObject target(size);
        target.bind();
        gl->glViewport(0, 0, size.width(), size.height());
        // Few enough that what else the machine does meets all programs of a round alike.
        const int frames = std::max(1, 1920 * 1080 / (size.width() * size.height()));
        for (int input = 0; input < VxShaderCodeBuilder::AUTO; ++input) {
            const auto texture = textureFrom(PanoramaReference::testPanorama(sourceSize(input)));
            for (int output = 0; output < VxShaderCodeBuilder::LAST_VALUE_PROJECTION; ++output) {
                PanoramaScene scene;
                scene.item = size;
                scene.projectionSource = input;
                scene.projection = output;
                scene.yaw = 0.4;
                scene.pitch = 0.2;
                builder.setProjectionSource(input);
                builder.setProjection(output);
                const QByteArray text = builder.fragmentShaderSource(false, false, false);

                const ShaderTexts cheap =
                    ShaderSpecialiser::streamline({VxShaderCodeBuilder::vertexShaderSource(),
                                                   ShaderSpecialiser::specialise(text, constants)});
                PanoramaQuad copy(kPassThrough);
                PanoramaQuad written(text);
                PanoramaQuad specialised(cheap.fragment, cheap.vertex);
                if (!copy.isValid() || !written.isValid() || !specialised.isValid())
                    return 1;

                std::vector<double> copyTimes;
                std::vector<double> writtenRatios;
                std::vector<double> specialisedRatios;
                // The first round compiles for the target and is not counted.
                for (int round = 0; round <= parser.value(rounds).toInt(); ++round) {
                    const auto time = [&](PanoramaQuad &quad) {
                        return timeOf(gl, quad, scene, texture->textureId(), frames);
                    };
                    const double copyTime = time(copy);
                    const double writtenTime = time(written);
                    const double specialisedTime = time(specialised);
                    if (round == 0)
                        continue;
                    copyTimes.push_back(copyTime);
                    writtenRatios.push_back(writtenTime / copyTime);
                    specialisedRatios.push_back(specialisedTime / copyTime);
                }
                const double ratio = median(specialisedRatios);
                worst = std::max(worst, ratio);
                out << name << ' ' << inputs.valueToKey(input) << ' ' << outputs.valueToKey(output)
                    << ": " << QString::number(median(copyTimes), 'f', 2) << " ms; "
                    << QString::number(median(writtenRatios), 'f', 2) << ", "
                    << QString::number(ratio, 'f', 2) << "\n";
                out.flush();
            }
        }
    }
    out << "worst specialised: " << QString::number(worst, 'f', 2) << "\n";
    return 0;
}
