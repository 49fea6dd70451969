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
#include "video/YuvConverter.h"
#include "video/YuvConverterImp.h"

#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_1_1>
#include <QOpenGLFunctions_2_0>
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
    int width, height;
    std::vector<std::vector<unsigned char>> bytes; // rows lie at the layout's pitch
    FrameLayout layout;

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

Planes makePlanes(VideoFormat format, int width, int height, const FrameLayout &layout)
{
    Planes planes{format, width, height, {}, layout};
    quint32 state = 1;
    for (int plane = 0; plane < layout.planeCount(); ++plane) {
        planes.bytes.emplace_back(std::size_t(layout.pitches[plane]) * layout.lines[plane]);
        for (unsigned char &byte : planes.bytes.back())
            byte = (state = state * 1664525u + 1013904223u) >> 24;
    }
    return planes;
}

int converterFourcc(VideoFormat format)
{
    switch (format) {
    case VideoFormat::NV12:
        return fourcc("NV12");
    case VideoFormat::YUYV:
        return fourcc("YUYV");
    case VideoFormat::UYVY:
        return fourcc("UYVY");
    case VideoFormat::YV12:
        return fourcc("YV12");
    default:
        return fourcc("I420");
    }
}

class Bt601Converter : public YuvConverterImp
{
public:
    Bt601Converter()
        : YuvConverterImp(QStringLiteral("  y = 0.5;\n  u = 0.25;\n  v = 0.625;\n"),
                          colorCode(ColorMatrix::Bt601, true))
    { }
};

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
    void layouts_data();
    void layouts();
    void impossibleFramesAreRefused();
    void yuvPixels_data();
    void yuvPixels();
    void fourBytePixels_data();
    void fourBytePixels();
    void frameThatIsNeverShown();
    void nothingIsMadeBeforeTheFirstPicture();
    void bt601();
    void unknownConverterDrawsNothing();

private:
    std::unique_ptr<TextureImp> makeImp(const QString &name) const;

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
        std::vector<unsigned char> back(picture.size());
        m_functions->glBindTexture(GL_TEXTURE_2D, imp->textureId());
        auto *gl = m_gl->context.versionFunctions<QOpenGLFunctions_1_1>();
        gl->initializeOpenGLFunctions();
        gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
        QVERIFY(back == picture);
    }
    imp->destroy();
    QVERIFY(!imp->isValid());
    QCOMPARE(m_functions->glGetError(), GLenum(GL_NO_ERROR));
}

void TestFrameTransfer::layouts_data()
{
    QTest::addColumn<VideoFormat>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QVector<int>>("pitchesAndLines");
    QTest::addColumn<QVector<int>>("offsetsAndTotal");

    using F = VideoFormat;
    const QSize even(64, 32);
    QTest::newRow("BGRA") << F::BGRA << QSize(63, 31) << QVector<int>{252, 0, 0, 31, 0, 0}
                          << QVector<int>{0, 0, 0, 7812};
    QTest::newRow("RV32") << F::RV32 << even << QVector<int>{256, 0, 0, 32, 0, 0}
                          << QVector<int>{0, 0, 0, 8192};
    QTest::newRow("YUYV") << F::YUYV << even << QVector<int>{128, 0, 0, 32, 0, 0}
                          << QVector<int>{0, 0, 0, 4096};
    QTest::newRow("I420") << F::I420 << even << QVector<int>{64, 32, 32, 32, 16, 16}
                          << QVector<int>{0, 2048, 2560, 3072};
    QTest::newRow("NV12") << F::NV12 << even << QVector<int>{64, 64, 0, 32, 16, 0}
                          << QVector<int>{0, 2048, 0, 3072};
    // An odd number of chroma lines takes one chroma pitch more.
    QTest::newRow("YV12, 17 chroma lines")
        << F::YV12 << QSize(64, 34) << QVector<int>{64, 32, 32, 34, 17, 17}
        << QVector<int>{0, 2176, 2752, 3296};
    QTest::newRow("J420, odd height")
        << F::J420 << QSize(64, 35) << QVector<int>{64, 32, 32, 35, 17, 17}
        << QVector<int>{0, 2240, 2816, 3360};
    QTest::newRow("NV12, 17 chroma lines")
        << F::NV12 << QSize(64, 34) << QVector<int>{64, 64, 0, 34, 17, 0}
        << QVector<int>{0, 2176, 0, 3328};
}

void TestFrameTransfer::layouts()
{
    QFETCH(VideoFormat, format);
    QFETCH(QSize, size);
    QFETCH(QVector<int>, pitchesAndLines);
    QFETCH(QVector<int>, offsetsAndTotal);
    const FrameLayout layout = FrameLayout::make(format, size.width(), size.height());
    for (int plane = 0; plane < 3; ++plane) {
        QCOMPARE(int(layout.pitches[plane]), pitchesAndLines[plane]);
        QCOMPARE(int(layout.lines[plane]), pitchesAndLines[plane + 3]);
        QCOMPARE(int(layout.offsets[plane]), offsetsAndTotal[plane]);
    }
    QCOMPARE(int(layout.totalSize), offsetsAndTotal[3]);
    // The texture, and with it the transfer memory, must hold every byte.
    QVERIFY(layout.textureWidth * layout.textureHeight * layout.bytesPerTexel
            >= int(layout.totalSize));
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
    VideoFrameBuffers frame;
    QVERIFY(frame.setUp(format, FrameLayout::paddedWidth(format, size.width()), size.height()));
    const Planes planes = makePlanes(format, size.width(), size.height(), frame.layout());
    const std::array<void *, 3> memory = frame.map();
    for (std::size_t plane = 0; plane < planes.bytes.size(); ++plane)
        std::memcpy(memory[plane], planes.bytes[plane].data(), planes.bytes[plane].size());
    frame.commit(true);

    YuvConverter converter(converterFourcc(format), fourcc("RGBA"), range == Range::Studio,
                           range == Range::Tessarel);
    QVERIFY(converter.isValid());
    QOpenGLFramebufferObject target(size, QOpenGLFramebufferObject::CombinedDepthStencil);
    target.bind();
    m_functions->glClearColor(0.2f, 0.4f, 0.6f, 0.0f);
    m_functions->glClear(GL_COLOR_BUFFER_BIT);
    converter.convert(frame.textureId(), size.width(), size.height());
    std::vector<unsigned char> pixels(std::size_t(size.width() * size.height() * 4));
    m_functions->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE,
                              pixels.data());
    target.release();

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
    VideoFrameBuffers frame;
    QVERIFY(frame.setUp(format, size.width(), size.height()));
    Planes planes = makePlanes(format, size.width(), size.height(), frame.layout());
    std::memcpy(frame.map()[0], planes.bytes[0].data(), planes.bytes[0].size());
    frame.commit(true);
    auto *gl = m_gl->context.versionFunctions<QOpenGLFunctions_1_1>();
    gl->initializeOpenGLFunctions();
    std::vector<unsigned char> back(planes.bytes[0].size());
    gl->glBindTexture(GL_TEXTURE_2D, frame.textureId());
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
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
    auto *gl = m_gl->context.versionFunctions<QOpenGLFunctions_1_1>();
    gl->initializeOpenGLFunctions();
    std::vector<unsigned char> back(frame.layout().totalSize);
    gl->glBindTexture(GL_TEXTURE_2D, frame.textureId());
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
    QVERIFY(back == std::vector<unsigned char>(back.size(), 2));
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

void TestFrameTransfer::bt601()
{
    QOpenGLFunctions_2_0 gl;
    QVERIFY(gl.initializeOpenGLFunctions());
    Bt601Converter converter;
    QVERIFY(converter.isLinked());
    QOpenGLFramebufferObject target(8, 8);
    target.bind();
    converter.convert(&gl, 0, 8, 8);
    unsigned char pixel[4];
    m_functions->glReadPixels(3, 3, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    target.release();
    const double luma = 1.1643 * (0.5 - 0.0625);
    QVERIFY(std::abs(pixel[0] - level(luma + 1.5958 * -0.25)) <= kTolerance);
    QVERIFY(std::abs(pixel[1] - level(luma - 0.39173 * 0.125 + 0.81290 * 0.25)) <= kTolerance);
    QVERIFY(std::abs(pixel[2] - level(luma + 2.018 * 0.125)) <= kTolerance);
}

void TestFrameTransfer::unknownConverterDrawsNothing()
{
    QOpenGLFramebufferObject target(8, 8);
    target.bind();
    m_functions->glClearColor(0, 1, 0, 1);
    m_functions->glClear(GL_COLOR_BUFFER_BIT);
    YuvConverter converter(fourcc("I444"), fourcc("RGBA"), 0, 0);
    QVERIFY(!converter.isValid());
    converter.convert(0, 8, 8);
    unsigned char pixel[4];
    m_functions->glReadPixels(3, 3, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    target.release();
    QCOMPARE(int(pixel[1]), 255);
    QCOMPARE(int(pixel[0]), 0);
}

QTEST_MAIN(TestFrameTransfer)
#include "tst_frame_transfer.moc"
