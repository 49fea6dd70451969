// SPDX-License-Identifier: GPL-3.0-or-later
// Known bytes go in, known pixels come out: the ways into a texture, the plane layouts and the
// conversion, through real GL objects. The program runs once for each set of OpenGL versions that
// a driver may offer.

#include "tests/video/OffscreenGl.h"
#include "video/DecoderTarget.h"
#include "video/IntelMapTextureImp.h"
#include "video/PboTextureImp.h"
#include "video/PinnedMemoryTextureImp.h"
#include "video/SimpleTextureImp.h"
#include "video/VideoFrameBuffers.h"

#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_1_1>
#include <QOpenGLFunctions_2_1>
#include <QOpenGLFunctions_3_0>
#include <QOpenGLFunctions_3_2_Core>
#include <QtTest>

#include <cmath>
#include <cstring>
#include <memory>

namespace {

constexpr int kTolerance = 2;

enum class Range {
    Full,
    Studio,
    Tessarel
};

struct Rgb
{
    double r, g, b;
};

// Whole steps towards zero, as the shader's int().
double whole(double value)
{
    return std::trunc(value);
}

// The converter's arithmetic, red and blue exchanged; y, u and v from 0 to 1.
Rgb reference(double y, double u, double v, Range range)
{
    if (range != Range::Studio) {
        y = 16.0 / 255.0 + y * 219.0 / 255.0;
        u = 16.0 / 255.0 + u * 224.0 / 255.0;
        v = 16.0 / 255.0 + v * 224.0 / 255.0;
    }
    if (range == Range::Tessarel) {
        const double luma = whole(y * 19077.0);
        const double cb = v - 128.0 / 255.0;
        const double cr = u - 128.0 / 255.0;
        const double bias = 297012.0 / 255.0;
        return {whole(whole(luma + cr * 29369.0 - bias) / 64) / 256.0,
                whole(whole(luma - cr * 8734.0 - cb * 3493.0 - bias) / 64) / 256.0,
                whole(whole(luma + cb * 34610.0 - bias) / 64) / 256.0};
    }
    const double luma = 1.1643 * (y - 0.0625);
    return {luma + 1.793 * (u - 0.5), luma - 0.2126 * (v - 0.5) - 0.534 * (u - 0.5),
            luma + 2.115 * (v - 0.5)};
}

int level(double value)
{
    return static_cast<int>(std::lround(std::min(std::max(value, 0.0), 1.0) * 255.0));
}

// A picture in its planes, independent of how they are packed for the card.
struct Planes
{
    VideoFormat format;
    FrameLayout layout;
    std::vector<std::vector<unsigned char>> bytes; // rows lie at the layout's pitch

    unsigned char at(int plane, int line, int column) const
    {
        return bytes[plane][std::size_t(line) * layout.pitches[plane] + std::size_t(column)];
    }

    // The bytes that make the pixel, and whether all of them are laid out: an odd height has a
    // last line whose chroma line is not.
    bool sample(int x, int y, int (&yuv)[3]) const
    {
        switch (format) {
        case VideoFormat::YUYV:
        case VideoFormat::UYVY: {
            const int lumaFirst = format == VideoFormat::YUYV ? 0 : 1;
            yuv[0] = at(0, y, 2 * x + lumaFirst);
            yuv[1] = at(0, y, x / 2 * 4 + 1 - lumaFirst);
            yuv[2] = at(0, y, x / 2 * 4 + 3 - lumaFirst);
            return true;
        }
        case VideoFormat::NV12:
            if (y / 2 >= int(layout.lines[1]))
                return false;
            yuv[0] = at(0, y, x);
            yuv[1] = at(1, y / 2, x / 2 * 2);
            yuv[2] = at(1, y / 2, x / 2 * 2 + 1);
            return true;
        default: {
            // Only the even chroma lines are ever shown.
            const int line = y / 4 * 2;
            if (line >= int(layout.lines[1]))
                return false;
            const int uPlane = format == VideoFormat::YV12 ? 2 : 1;
            yuv[0] = at(0, y, x);
            yuv[1] = at(uPlane, line, x / 2);
            yuv[2] = at(3 - uPlane, line, x / 2);
            return true;
        }
        }
    }
};

void fillWithNoise(Planes &planes)
{
    quint32 state = 1;
    for (int plane = 0; plane < planes.layout.planeCount(); ++plane) {
        planes.bytes.emplace_back(std::size_t(planes.layout.pitches[plane])
                                  * planes.layout.lines[plane]);
        for (unsigned char &byte : planes.bytes.back())
            byte = (state = state * 1664525u + 1013904223u) >> 24;
    }
}

} // namespace

Q_DECLARE_METATYPE(VideoFormat)
Q_DECLARE_METATYPE(Range)

class TestFrameTransfer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void choice();
    void eachWay_data();
    void eachWay();
    void impossibleFramesAreRefused();
    void yuvPixels_data();
    void yuvPixels();
    void fourBytePixels_data();
    void fourBytePixels();
    void frameThatIsNeverShown();
    void nothingIsMadeBeforeTheFirstPicture();

private:
    std::unique_ptr<TextureImp> makeImp(const QString &name) const;
    static std::vector<unsigned char> readTexture(GLuint texture, const QSize &size);
    void draw(const QSize &size, Range range, Planes &planes, std::vector<unsigned char> &pixels);

    std::unique_ptr<OffscreenGl> m_gl;
    QOpenGLFunctions *m_functions = nullptr;
};

void TestFrameTransfer::initTestCase()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->ok);
    m_functions = m_gl->context.functions();
}

// What a context offers decides the way; `TAVRO_EXPECT_TRANSFER` names it for this run.
void TestFrameTransfer::choice()
{
    const int expected = qEnvironmentVariableIntValue("TAVRO_EXPECT_TRANSFER");
    Texture plain(false);
    QCOMPARE(int(plain.transfer()), expected ? expected : int(Texture::PixelBuffer));
    QVERIFY(plain.create());
    plain.destroy();
    Texture async(true);
    const bool pinned = m_gl->context.versionFunctions<QOpenGLFunctions_3_2_Core>()
        && m_gl->context.hasExtension("GL_AMD_pinned_memory");
    QCOMPARE(int(async.transfer()), pinned ? int(Texture::PinnedMemory) : int(plain.transfer()));
}

std::unique_ptr<TextureImp> TestFrameTransfer::makeImp(const QString &name) const
{
    const QOpenGLContext &context = m_gl->context;
    auto *gl32 = context.versionFunctions<QOpenGLFunctions_3_2_Core>();
    if (gl32)
        gl32->initializeOpenGLFunctions();
    if (name == QLatin1String("simple")) {
        auto *gl = context.versionFunctions<QOpenGLFunctions_1_1>();
        gl->initializeOpenGLFunctions();
        return std::make_unique<SimpleTextureImp>(false, gl);
    }
    if (name == QLatin1String("pinned")) {
        if (!gl32 || !context.hasExtension("GL_AMD_pinned_memory"))
            return {};
        return std::make_unique<PinnedMemoryTextureImp>(true, gl32);
    }
    if (name == QLatin1String("intel")) {
        auto *gl = context.versionFunctions<QOpenGLFunctions_3_0>();
        if (!gl || !context.hasExtension("GL_INTEL_map_texture"))
            return {};
        gl->initializeOpenGLFunctions();
        return std::make_unique<IntelMapTextureImp>(false, gl);
    }
    auto *gl = context.versionFunctions<QOpenGLFunctions_2_1>();
    if (!gl)
        return {};
    gl->initializeOpenGLFunctions();
    const bool fenced = name == QLatin1String("pixel buffer with fences");
    if (fenced && !gl32)
        return {};
    return std::make_unique<PboTextureImp>(fenced, gl, fenced ? gl32 : nullptr);
}

void TestFrameTransfer::eachWay_data()
{
    QTest::addColumn<QSize>("size");
    for (const char *name :
         {"simple", "pixel buffer", "pixel buffer with fences", "pinned", "intel"}) {
        QTest::addRow("%s, 64 by 32", name) << QSize(64, 32);
        QTest::addRow("%s, odd size", name) << QSize(37, 19);
    }
}

void TestFrameTransfer::eachWay()
{
    QFETCH(QSize, size);
    const QString name = QString::fromLatin1(QTest::currentDataTag()).section(u',', 0, 0);
    const std::unique_ptr<TextureImp> imp = makeImp(name);
    if (!imp)
        QSKIP("this context does not offer it");
    m_functions->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    QVERIFY(imp->create());
    const int w = size.width();
    const int h = size.height();
    QVERIFY(imp->allocate(GL_TEXTURE_2D, GL_RGBA8, w, h, GL_RGBA, GL_UNSIGNED_BYTE));
    QOpenGLFramebufferObject target(size);
    // Twice, so that the second picture replaces the first.
    for (int round = 1; round <= 2; ++round) {
        std::vector<unsigned char> picture(std::size_t(w * h * 4));
        for (std::size_t i = 0; i < picture.size(); ++i)
            picture[i] = static_cast<unsigned char>(i * 7 * round + i / 256);
        int stride = w * 4;
        if (void *memory = imp->map(&stride)) {
            for (int line = 0; line < h; ++line)
                std::memcpy(static_cast<char *>(memory) + line * stride, &picture[line * w * 4],
                            std::size_t(w * 4));
            imp->unmap();
        }
        imp->upload(GL_TEXTURE_2D, GL_RGBA8, w, h, GL_RGBA, GL_UNSIGNED_BYTE, picture.data());
        imp->wait();
        QVERIFY(readTexture(imp->textureId(), size) == picture);
    }
    imp->destroy();
    QVERIFY(!imp->isValid());
    QCOMPARE(m_functions->glGetError(), GLenum(GL_NO_ERROR));
}

std::vector<unsigned char> TestFrameTransfer::readTexture(GLuint texture, const QSize &size)
{
    auto *gl = QOpenGLContext::currentContext()->versionFunctions<QOpenGLFunctions_1_1>();
    gl->initializeOpenGLFunctions();
    std::vector<unsigned char> pixels(std::size_t(size.width() * size.height() * 4));
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

// Takes noise in the planes' format the whole way to RGB, as the player does.
void TestFrameTransfer::draw(const QSize &size, Range range, Planes &planes,
                             std::vector<unsigned char> &pixels)
{
    DecoderTarget target;
    QVERIFY(target.makeCurrent(&m_gl->context, &m_gl->surface));
    QVERIFY(target.setUp(planes.format, size, range == Range::Studio, range == Range::Tessarel));
    planes.layout = target.frame()->layout();
    fillWithNoise(planes);
    const std::array<void *, 3> memory = target.map();
    for (std::size_t plane = 0; plane < planes.bytes.size(); ++plane)
        std::memcpy(memory[plane], planes.bytes[plane].data(), planes.bytes[plane].size());
    target.commit();
    pixels = readTexture(target.draw(), size);
    QCOMPARE(m_functions->glGetError(), GLenum(GL_NO_ERROR));
    target.drop();
    target.deleteContext();
    QVERIFY(m_gl->context.makeCurrent(&m_gl->surface));
}

void TestFrameTransfer::impossibleFramesAreRefused()
{
    for (const QSize size : {QSize(0, 0), QSize(-4, 8), QSize(1, 1), QSize(60000, 60000)}) {
        VideoFrameBuffers frame;
        QVERIFY(!frame.setUp(VideoFormat::I420, size.width(), size.height()));
    }
    VideoFrameBuffers frame;
    QVERIFY(!frame.setUp(VideoFormat::None, 64, 32));
}

void TestFrameTransfer::yuvPixels_data()
{
    QTest::addColumn<VideoFormat>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Range>("range");

    using F = VideoFormat;
    const std::pair<const char *, F> formats[] = {{"I420", F::I420}, {"J420", F::J420},
                                                  {"YV12", F::YV12}, {"NV12", F::NV12},
                                                  {"YUYV", F::YUYV}, {"UYVY", F::UYVY}};
    const std::pair<const char *, Range> ranges[] = {{"full range", Range::Full},
                                                     {"studio range", Range::Studio},
                                                     {"Tessarel", Range::Tessarel}};
    // Heights of all four remainders by 4, for the place of plane 2; odd widths, which are padded.
    const QSize sizes[] = {{64, 32}, {66, 33}, {70, 34}, {63, 35}, {321, 181}};
    for (const auto &format : formats) {
        for (const auto &range : ranges) {
            for (const QSize &size : sizes)
                QTest::addRow("%s %dx%d %s", format.first, size.width(), size.height(), range.first)
                    << format.second << size << range.second;
        }
    }
}

void TestFrameTransfer::yuvPixels()
{
    QFETCH(VideoFormat, format);
    QFETCH(QSize, size);
    QFETCH(Range, range);
    Planes planes{format, {}, {}};
    std::vector<unsigned char> pixels;
    draw(size, range, planes, pixels);
    if (QTest::currentTestFailed())
        return;

    // The packed formats have no Tessarel arithmetic.
    const bool packed = format == VideoFormat::YUYV || format == VideoFormat::UYVY;
    const Range expectedRange = packed && range == Range::Tessarel ? Range::Full : range;
    int compared = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            int yuv[3];
            if (!planes.sample(x, y, yuv))
                continue;
            const Rgb rgb =
                reference(yuv[0] / 255.0, yuv[1] / 255.0, yuv[2] / 255.0, expectedRange);
            const int expected[4] = {level(rgb.r), level(rgb.g), level(rgb.b), 255};
            const unsigned char *pixel = &pixels[std::size_t((y * size.width() + x) * 4)];
            for (int channel = 0; channel < 4; ++channel) {
                if (std::abs(pixel[channel] - expected[channel]) > kTolerance)
                    QFAIL(qPrintable(QStringLiteral("pixel %1,%2 channel %3: %4 instead of %5")
                                         .arg(x)
                                         .arg(y)
                                         .arg(channel)
                                         .arg(pixel[channel])
                                         .arg(expected[channel])));
            }
            ++compared;
        }
    }
    QVERIFY(compared >= size.width() * (size.height() - 1));
    QCOMPARE(m_functions->glGetError(), GLenum(GL_NO_ERROR));
}

void TestFrameTransfer::fourBytePixels_data()
{
    QTest::addColumn<VideoFormat>("format");
    QTest::addColumn<QSize>("size");
    QTest::newRow("BGRA") << VideoFormat::BGRA << QSize(64, 32);
    QTest::newRow("BGRA odd") << VideoFormat::BGRA << QSize(321, 181);
    QTest::newRow("RV32") << VideoFormat::RV32 << QSize(64, 32);
    QTest::newRow("RV32 odd") << VideoFormat::RV32 << QSize(37, 19);
}

// Blue comes out in red's place, and RV32 is opaque whatever its fourth byte holds.
void TestFrameTransfer::fourBytePixels()
{
    QFETCH(VideoFormat, format);
    QFETCH(QSize, size);
    Planes planes{format, {}, {}};
    std::vector<unsigned char> back;
    draw(size, Range::Full, planes, back);
    if (QTest::currentTestFailed())
        return;
    if (format == VideoFormat::RV32) {
        for (std::size_t i = 3; i < back.size(); i += 4)
            planes.bytes[0][i] = 255;
    }
    QVERIFY(back == planes.bytes[0]);
    QCOMPARE(m_functions->glGetError(), GLenum(GL_NO_ERROR));
}

// At a seek a picture is locked and then dropped; the next one must still find its memory.
void TestFrameTransfer::frameThatIsNeverShown()
{
    VideoFrameBuffers frame;
    QVERIFY(frame.setUp(VideoFormat::BGRA, 16, 16));
    frame.commit(true); // nothing begun
    std::memset(frame.map()[0], 1, frame.layout().totalSize);
    std::memset(frame.map()[0], 2, frame.layout().totalSize);
    frame.commit(true);
    QVERIFY(readTexture(frame.textureId(), {16, 16})
            == std::vector<unsigned char>(frame.layout().totalSize, 2));
    QCOMPARE(m_functions->glGetError(), GLenum(GL_NO_ERROR));
}

// libvlc asks for formats that it then cannot deliver; each would cost a picture's memory.
void TestFrameTransfer::nothingIsMadeBeforeTheFirstPicture()
{
    DecoderTarget target;
    QVERIFY(target.makeCurrent(&m_gl->context, &m_gl->surface));
    const auto objects = [] {
        QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
        int count = 0;
        for (GLuint name = 1; name < 200; ++name)
            count += gl->glIsTexture(name) + gl->glIsBuffer(name) + gl->glIsFramebuffer(name)
                + gl->glIsProgram(name);
        return count;
    };
    const int before = objects();
    for (const VideoFormat format : {VideoFormat::BGRA, VideoFormat::I420}) {
        QVERIFY(target.setUp(format, {64, 32}, false, false));
        QCOMPARE(target.frame()->layout().pitches[0], format == VideoFormat::BGRA ? 256u : 64u);
        QCOMPARE(objects(), before);
    }
    QVERIFY(target.map()[2]);
    target.commit();
    QVERIFY(target.draw() != 0);
    QVERIFY(objects() > before);
    target.drop();
    target.makeCurrent();
    QCOMPARE(objects(), before);
    target.drop();
    target.deleteContext();
    QVERIFY(m_gl->context.makeCurrent(&m_gl->surface));
}

QTEST_MAIN(TestFrameTransfer)
#include "tst_frame_transfer.moc"
