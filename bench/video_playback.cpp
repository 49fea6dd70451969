// SPDX-License-Identifier: GPL-3.0-or-later
// Plays a clip in one of several ways and reports what it cost. One process a way, so that the
// figures are a process's own; `bench/video` runs them all and prints the ratios.
//
//   floor-bgra, floor-planes    libvlc alone, into memory that nobody looks at
//   player-bgra, player-planes  the player item, its window hidden
//   window                      libvlc's own output in a window of 1280x720
//   upload                      one frame's way into the texture against a plain upload
#include "settings/VxVlcOptions.h"
#include "video/BoundedWait.h"
#include "video/VideoFrameBuffers.h"
#include "video/VxVlcPlayerQml.h"
#include "video/YuvConverter.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QTextStream>
#include <QTimer>

#include <sys/resource.h>
#include <vlc/vlc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int kMeasuredMs = 10000;

// From here on the clip runs as it will run.
constexpr int kSettleMs = 500;

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return double(time.tv_sec) + time.tv_usec * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

qint64 nowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

int proportionalSetSizeKb()
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("Pss:"))
            return line.mid(4).trimmed().split(' ').first().toInt();
    }
    return 0;
}

/// Counts displays and measures from shortly after the third one.
class Meter : public QObject
{
public:
    // On any thread.
    void displayed()
    {
        if (++m_displays == 3) {
            m_firstMs = nowMs();
            QMetaObject::invokeMethod(
                this, [this] { QTimer::singleShot(kSettleMs, this, [this] { begin(); }); },
                Qt::QueuedConnection);
        }
    }

    // For a way that displays by itself: asked for the count when it is needed.
    std::function<int()> count = [this] { return m_displays.load(); };

    void begin()
    {
        m_cpu = cpuSeconds();
        m_begun = count();
        auto *sampler = new QTimer(this);
        connect(sampler, &QTimer::timeout, this,
                [this] { m_peakKb = std::max(m_peakKb, proportionalSetSizeKb()); });
        sampler->start(500);
        QTimer::singleShot(kMeasuredMs, this, [this] {
            QTextStream(stdout) << "{\"cpu_s\": " << cpuSeconds() - m_cpu
                                << ", \"displayed\": " << count() - m_begun
                                << ", \"first_ms\": " << m_firstMs
                                << ", \"peak_pss_kb\": " << m_peakKb << "}\n";
            QCoreApplication::exit();
        });
    }

private:
    std::atomic<int> m_displays{0};
    std::atomic<qint64> m_firstMs{0};
    double m_cpu = 0;
    int m_begun = 0;
    int m_peakKb = 0;
};

struct Floor
{
    Meter *meter;
    bool planes;
    std::vector<unsigned char> memory;
    FrameLayout layout;
};

unsigned floorFormat(void **opaque, char *chroma, unsigned *width, unsigned *height,
                     unsigned *pitches, unsigned *lines)
{
    auto *floor = static_cast<Floor *>(*opaque);
    VideoFormat format = videoFormatFromChroma(chroma);
    if (!floor->planes || format == VideoFormat::None) {
        format = VideoFormat::BGRA;
        std::memcpy(chroma, "BGRA", 4);
    }
    floor->layout = FrameLayout::make(format, int(*width), int(*height));
    for (int plane = 0; plane < 3; ++plane) {
        pitches[plane] = floor->layout.pitches[plane];
        lines[plane] = floor->layout.lines[plane];
    }
    floor->memory.resize(floor->layout.totalSize + *width);
    return 1;
}

void *floorLock(void *opaque, void **planes)
{
    auto *floor = static_cast<Floor *>(opaque);
    for (int plane = 0; plane < floor->layout.planeCount(); ++plane)
        planes[plane] = floor->memory.data() + floor->layout.offsets[plane];
    return nullptr;
}

libvlc_instance_t *newInstance(const VxVlcOptions &options)
{
    std::vector<QByteArray> texts;
    for (const QString &argument : options.instanceArguments())
        texts.push_back(argument.toUtf8());
    texts.push_back("--no-video-title-show");
    std::vector<const char *> arguments;
    for (const QByteArray &text : texts)
        arguments.push_back(text.constData());
    return libvlc_new(int(arguments.size()), arguments.data());
}

int playFloor(const QString &path, bool planes, const VxVlcOptions &options)
{
    Meter meter;
    Floor floor{&meter, planes, {}, {}};
    libvlc_instance_t *instance = newInstance(options);
    libvlc_media_t *media = libvlc_media_new_path(instance, path.toUtf8().constData());
    libvlc_media_player_t *player = libvlc_media_player_new_from_media(media);
    libvlc_video_set_callbacks(
        player, floorLock, nullptr,
        [](void *opaque, void *) { static_cast<Floor *>(opaque)->meter->displayed(); }, &floor);
    libvlc_video_set_format_callbacks(player, floorFormat, nullptr);
    libvlc_media_player_play(player);
    const int result = QCoreApplication::exec();
    libvlc_media_player_stop(player);
    libvlc_media_player_release(player);
    libvlc_media_release(media);
    libvlc_release(instance);
    return result;
}

int playWindow(const QString &path, const VxVlcOptions &options)
{
    Meter meter;
    libvlc_instance_t *instance = newInstance(options);
    libvlc_media_t *media = libvlc_media_new_path(instance, path.toUtf8().constData());
    libvlc_media_player_t *player = libvlc_media_player_new_from_media(media);
    QWindow window;
    window.resize(1280, 720);
    window.show();
    libvlc_media_player_set_xwindow(player, quint32(window.winId()));
    meter.count = [media] {
        libvlc_media_stats_t stats{};
        libvlc_media_get_stats(media, &stats);
        return stats.i_displayed_pictures;
    };
    libvlc_media_player_play(player);
    auto *poll = new QTimer(&meter);
    QObject::connect(poll, &QTimer::timeout, &meter, [&meter, poll] {
        if (meter.count() < 3)
            return;
        poll->stop();
        for (int i = 0; i < 3; ++i)
            meter.displayed();
    });
    poll->start(5);
    // Without an output for windows nothing ever comes.
    QTimer::singleShot(20000, poll, [poll] {
        if (poll->isActive())
            QCoreApplication::exit(1);
    });
    const int result = QCoreApplication::exec();
    libvlc_media_player_stop(player);
    libvlc_media_player_release(player);
    libvlc_media_release(media);
    libvlc_release(instance);
    return result;
}

int playItem(const QString &path)
{
    Meter meter;
    QQuickWindow window;
    window.resize(1280, 720);
    VxVlcPlayerQml player(window.contentItem());
    window.show();
    // The item reports from its third picture on, and only while its window is there.
    meter.displayed();
    meter.displayed();
    QObject::connect(
        &player, &VxVlcPlayerQml::frameDisplayed, &meter, [&meter] { meter.displayed(); },
        Qt::DirectConnection);
    std::atomic<int> pictures{0};
    meter.count = [&pictures] { return pictures.load(); };
    QObject::connect(
        &player, &VxVlcPlayerQml::fpsChanged, &meter,
        [&player, &pictures] { pictures += player.fps(); }, Qt::DirectConnection);
    QObject::connect(&player, &VxVlcPlayerQml::textureIdChanged, &window, &QWindow::hide);
    QObject::connect(&player, &VxVlcPlayerQml::errorStringChanged, &meter,
                     [] { QCoreApplication::exit(1); });
    player.openFile(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
    return QCoreApplication::exec();
}

/// Milliseconds of the median of several runs, the card's work included.
double medianMs(QOpenGLFunctions *gl, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int run = 0; run < 21; ++run) {
        gl->glFinish();
        QElapsedTimer timer;
        timer.start();
        work();
        gl->glFinish();
        times.push_back(double(timer.nsecsElapsed()) * 1e-6);
    }
    std::nth_element(times.begin(), times.begin() + 10, times.end());
    return times[10];
}

int measureUpload()
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface))
        return 1;
    QOpenGLFunctions *gl = context.functions();
    QTextStream out(stdout);
    const QSize size(3840, 1920);
    for (const VideoFormat format : {VideoFormat::BGRA, VideoFormat::I420, VideoFormat::NV12}) {
        VideoFrameBuffers frame;
        if (!frame.setUp(format, size.width(), size.height()))
            return 1;
        const FrameLayout &layout = frame.layout();
        const std::vector<unsigned char> picture(layout.totalSize, 128);
        std::unique_ptr<YuvConverter> converter;
        if (isYuv(format))
            converter = std::make_unique<YuvConverter>(format == VideoFormat::NV12 ? fourcc("NV12")
                                                                                   : fourcc("I420"),
                                                       fourcc("RGBA"), 0, 0);
        QOpenGLFramebufferObject target(size, QOpenGLFramebufferObject::CombinedDepthStencil);
        // The decoder's own writing counts for neither side.
        const double write =
            medianMs(gl, [&] { std::memcpy(frame.map()[0], picture.data(), picture.size()); });
        const double whole = medianMs(gl, [&] {
            std::memcpy(frame.map()[0], picture.data(), picture.size());
            frame.commit(true);
            if (converter) {
                target.bind();
                converter->convert(frame.textureId(), size.width(), size.height());
                target.release();
            }
        });
        GLuint texture = 0;
        gl->glGenTextures(1, &texture);
        const GLenum kind = isYuv(format) ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D;
        const GLenum pixels = isYuv(format) ? GL_RED : GL_RGBA;
        gl->glBindTexture(kind, texture);
        gl->glTexImage2D(kind, 0, isYuv(format) ? GL_R8 : GL_RGBA8, layout.textureWidth,
                         layout.textureHeight, 0, pixels, GL_UNSIGNED_BYTE, nullptr);
        const double plain = medianMs(gl, [&] {
            gl->glTexSubImage2D(kind, 0, 0, 0, layout.textureWidth, layout.textureHeight, pixels,
                                GL_UNSIGNED_BYTE, picture.data());
        });
        gl->glDeleteTextures(1, &texture);
        out << "{\"format\": \"" << videoFormatName(format) << "\", \"bytes\": " << layout.totalSize
            << ", \"transfer\": \"" << Texture::transferName(frame.transfer())
            << "\", \"ours_ms\": " << whole - write << ", \"plain_ms\": " << plain << "}\n";
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    const QString way = arguments.value(1);
    const QString path = arguments.value(2);
    VxVlcOptions options;
    options.disableAudio = true;
    options.shaderColorConversion = way == QLatin1String("player-planes");
    VxVlcOptions::setInstance(&options);
    if (way.startsWith(QLatin1String("floor-")))
        return playFloor(path, way.endsWith(QLatin1String("planes")), options);
    if (way.startsWith(QLatin1String("player-"))) {
        const int result = playItem(path);
        // A player that takes its time to stop uses the application object.
        waitForLateWork(std::chrono::seconds(20));
        return result;
    }
    if (way == QLatin1String("window"))
        return playWindow(path, options);
    if (way == QLatin1String("upload"))
        return measureUpload();
    QTextStream(stderr) << "usage: bench_video_playback WAY [FILE]\n";
    return 2;
}
