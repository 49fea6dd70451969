// SPDX-License-Identifier: GPL-3.0-or-later
// The least that must be paid for what the player does, one thing at a time, each as a program of
// its own: reading a picture, showing an empty scene, drawing the panorama's quad, standing still.

#include "render/PanoramaProgram.h"
#include "render/VxShaderCodeBuilder.h"
#include "settings/VxSettings.h"
#include "tests/common/FakeContext.h"
#include "tests/common/PanoramaQuad.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImageReader>
#include <QMatrix4x4>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLTexture>
#include <QQuickView>
#include <QTextStream>
#include <QWindow>
#include <QtMath>

#include <functional>

namespace {

constexpr int kMeasuredMs = 5000;
constexpr QSize kSize(1280, 720);

void say(const QString &text)
{
    QTextStream(stderr) << text << '\n';
}

QImage readPicture(const QString &file)
{
    QImageReader reader(file);
    reader.setAutoTransform(true);
    return reader.read();
}

int readAlone(const QString &file)
{
    QElapsedTimer timer;
    timer.start();
    const QImage picture = readPicture(file);
    const double milliseconds = double(timer.nsecsElapsed()) / 1e6;
    say(QStringLiteral("read %1").arg(milliseconds));
    return picture.isNull() ? 1 : 0;
}

int emptyView()
{
    QQuickView view;
    view.resize(1000, 600);
    QObject::connect(&view, &QQuickWindow::frameSwapped, &view, [] { say("first frame"); });
    view.show();
    return QGuiApplication::exec();
}

/// A window with a context of its own and nothing around it.
class BareWindow : public QWindow
{
public:
    BareWindow()
    {
        setSurfaceType(OpenGLSurface);
        resize(kSize);
        create();
        m_context.create();
        show();
        while (!isExposed())
            QGuiApplication::processEvents(QEventLoop::WaitForMoreEvents);
        m_context.makeCurrent(this);
    }

    QOpenGLFunctions *gl() { return m_context.functions(); }

    void swap() { m_context.swapBuffers(this); }

private:
    QOpenGLContext m_context;
};

/// Draws frame after frame and tells how many a second. The frames below 0 compile and do not
/// count.
void tellRate(BareWindow &window, const std::function<void(int frame)> &draw)
{
    QElapsedTimer timer;
    int frames = -10;
    for (; frames < 0 || timer.elapsed() < kMeasuredMs; ++frames) {
        if (frames == 0)
            timer.start();
        draw(frames);
        window.swap();
        QGuiApplication::processEvents();
    }
    say(QStringLiteral("frames %1").arg(frames * 1000.0 / double(timer.elapsed())));
}

int turningQuad(const QString &file, bool specialised)
{
    BareWindow window;
    QOpenGLFunctions *gl = window.gl();
    QOpenGLTexture texture(readPicture(file), QOpenGLTexture::DontGenerateMipMaps);
    VxSettings settings(QStringLiteral("bench"));
    FakeContext context;
    context.settingsObject = &settings;
    VxShaderCodeBuilder builder(&context);
    const QByteArray text = builder.fragmentShaderSource(false, false, false);
    gl->glViewport(0, 0, kSize.width(), kSize.height());

    if (specialised) {
        const auto program = PanoramaProgram::build(
            "panorama", text, ShaderAssumption::FullSphere | ShaderAssumption::RotatesOnly);
        if (!program)
            return 1;
        PanoramaUniforms uniforms;
        const float ratio = float(kSize.width()) / float(kSize.height());
        uniforms.viewportSize = {float(kSize.width()), float(kSize.height())};
        uniforms.viewportSizeMin = {float(kSize.height()), float(kSize.height())};
        uniforms.viewportSizeRatio = {ratio, 1};
        uniforms.fov = 90;
        tellRate(window, [&](int frame) {
            uniforms.matViewInverse = QMatrix4x4();
            uniforms.matViewInverse.rotate(float(frame), 0, 1, 0);
            program->draw(gl, uniforms, 0, texture.textureId());
        });
    } else {
        PanoramaQuad quad(text);
        if (!quad.isValid())
            return 1;
        PanoramaScene scene;
        scene.item = kSize;
        tellRate(window, [&](int frame) {
            scene.yaw = qDegreesToRadians(double(frame));
            quad.setUniforms(scene, 0);
            quad.draw(gl, texture.textureId());
        });
    }
    return 0;
}

int stillWindow()
{
    BareWindow window;
    window.gl()->glClear(GL_COLOR_BUFFER_BIT);
    window.swap();
    say("first frame");
    return QGuiApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    const QString what = arguments.value(1);
    const QString file = arguments.value(2);
    if (what == QLatin1String("read"))
        return readAlone(file);
    if (what == QLatin1String("view"))
        return emptyView();
    if (what == QLatin1String("quad"))
        return turningQuad(file, true);
    if (what == QLatin1String("quad-as-written"))
        return turningQuad(file, false);
    if (what == QLatin1String("still"))
        return stillWindow();
    say("usage: bench_floors read FILE | view | quad FILE | quad-as-written FILE | still");
    return 2;
}
