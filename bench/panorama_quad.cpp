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
#include <ctime>
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

/// Milliseconds a frame: on the clock, and of all threads of the program.
struct Time
{
    double wall;
    double cpu;
};

Time timeOf(QOpenGLFunctions *gl, PanoramaQuad &quad, const PanoramaScene &scene, GLuint texture,
            int frames)
{
    quad.setUniforms(scene, 0);
    gl->glFinish();
    const std::clock_t cpu = std::clock();
    QElapsedTimer timer;
    timer.start();
    for (int frame = 0; frame < frames; ++frame) {
        quad.draw(gl, texture);
        gl->glFinish();
    }
    return {double(timer.nsecsElapsed()) / 1e6 / frames,
            double(std::clock() - cpu) * 1e3 / CLOCKS_PER_SEC / frames};
}

/// The copy's milliseconds and how many times as much the panorama takes, medians of all rounds.
struct Figures
{
    double copy;
    Time written;
    Time specialised;
};

Figures measure(QOpenGLFunctions *gl, const QByteArray &text, const PanoramaScene &scene,
                GLuint texture, int rounds)
{
    const ShaderTexts cheap = ShaderSpecialiser::streamline(
        {VxShaderCodeBuilder::vertexShaderSource(),
         ShaderSpecialiser::specialise(text,
                                       ShaderSpecialiser::gradingConstants()
                                           + ShaderSpecialiser::fullSphereConstants())},
        true);
    PanoramaQuad quads[]{PanoramaQuad(kPassThrough), PanoramaQuad(text),
                         PanoramaQuad(cheap.fragment, cheap.vertex)};
    for (const PanoramaQuad &quad : quads) {
        if (!quad.isValid())
            qFatal("a program does not build");
    }
    // Few enough that what else the machine does meets all programs of a round alike.
    const int frames = std::max(1, 1920 * 1080 / (scene.item.width() * scene.item.height()));

    std::vector<double> copy;
    std::vector<double> ratios[2][2]; // written, specialised; wall, CPU
    // The first round compiles for the target and is not counted.
    for (int round = 0; round <= rounds; ++round) {
        Time times[3];
        for (int i = 0; i < 3; ++i)
            times[i] = timeOf(gl, quads[i], scene, texture, frames);
        if (round == 0)
            continue;
        copy.push_back(times[0].wall);
        for (int i = 0; i < 2; ++i) {
            ratios[i][0].push_back(times[i + 1].wall / times[0].wall);
            ratios[i][1].push_back(times[i + 1].cpu / times[0].cpu);
        }
    }
    return {median(copy),
            {median(ratios[0][0]), median(ratios[0][1])},
            {median(ratios[1][0]), median(ratios[1][1])}};
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

    const int roundCount = std::max(1, parser.value(rounds).toInt());
    QTextStream out(stdout);
    OffscreenContext context;
    if (!context.isValid()) {
        out << "no OpenGL context\n";
        return 1;
    }
    QOpenGLFunctions *gl = context.functions();
    out << reinterpret_cast<const char *>(gl->glGetString(GL_RENDERER)) << "\n"
        << "size input output: ms of the copy; times the copy, in brackets by CPU time: as "
           "written, specialised\n";

    VxSettings settings(QStringLiteral("bench"));
    FakeContext fake;
    fake.settingsObject = &settings;
    VxShaderCodeBuilder builder(&fake);
    const QMetaEnum inputs = QMetaEnum::fromType<VxShaderCodeBuilder::InputProjection>();
    const QMetaEnum outputs = QMetaEnum::fromType<VxShaderCodeBuilder::ShaderProjection>();

    Time worst{0, 0};
    for (const QSize size : {QSize(1280, 720), QSize(1920, 1080), QSize(3840, 2160)}) {
        const QString name = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
        if (parser.isSet(only) && parser.value(only) != name)
            continue;
        QOpenGLFramebufferObject target(size);
        target.bind();
        gl->glViewport(0, 0, size.width(), size.height());
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

                const Figures figures = measure(gl, text, scene, texture->textureId(), roundCount);
                worst.wall = std::max(worst.wall, figures.specialised.wall);
                worst.cpu = std::max(worst.cpu, figures.specialised.cpu);
                out << name << ' ' << inputs.valueToKey(input) << ' ' << outputs.valueToKey(output)
                    << QString::asprintf(": %.2f ms; %.2f (%.2f), %.2f (%.2f)\n", figures.copy,
                                         figures.written.wall, figures.written.cpu,
                                         figures.specialised.wall, figures.specialised.cpu);
                out.flush();
            }
        }
    }
    out << QString::asprintf("worst specialised: %.2f (%.2f)\n", worst.wall, worst.cpu);
    return 0;
}
