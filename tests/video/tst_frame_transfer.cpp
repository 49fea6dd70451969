// SPDX-License-Identifier: GPL-3.0-or-later
// Known bytes go in, known pixels come out: the ways into a texture, the plane layouts and the
// conversion, through real GL objects. The program runs once for each set of OpenGL versions that
// a driver may offer.

#include "tests/video/OffscreenGl.h"
#include "tests/video/YuvReference.h"
#include "video/DecoderTarget.h"
#include "video/VideoFrameBuffers.h"

#include <QOpenGLFunctions_1_1>
#include <QOpenGLFunctions_3_2_Core>
#include <QtTest>

#include <cstring>
#include <memory>

namespace {

// A picture in its planes, independent of how they are packed for the card.
struct Planes
{
    VideoFormat format;
    FrameLayout layout;
    std::vector<std::vector<unsigned char>> bytes; // rows lie at the layout's pitch

    int at(int plane, int line, int column) const
    {
        return bytes[plane][std::size_t(line) * layout.pitches[plane] + std::size_t(column)];
    }

    void fillWithNoise()
    {
        quint32 state = 1;
        for (int plane = 0; plane < layout.planeCount(); ++plane) {
            bytes.emplace_back(std::size_t(layout.pitches[plane]) * layout.lines[plane]);
            for (unsigned char &byte : bytes.back())
                byte = (state = state * 1664525u + 1013904223u) >> 24;
        }
    }

    // What the pixel must come to; none where its bytes are not all laid out: an odd height has a
    // last line whose chroma line is not.
    std::vector<int> pixel(int x, int y, Range range) const
    {
        if (!isYuv(format)) {
            const int alpha = format == VideoFormat::RV32 ? 255 : at(0, y, 4 * x + 3);
            return {at(0, y, 4 * x), at(0, y, 4 * x + 1), at(0, y, 4 * x + 2), alpha};
        }
        std::array<int, 3> yuv{};
        if (layout.planeCount() == 1) {
            const int luma = format == VideoFormat::YUYV ? 0 : 1;
            yuv = {at(0, y, 2 * x + luma), at(0, y, x / 2 * 4 + 1 - luma),
                   at(0, y, x / 2 * 4 + 3 - luma)};
            if (range == Range::Tessarel)
                range = Range::Full; // these have no arithmetic of that kind
        } else {
            // Of separate planes only the even lines are ever shown.
            const bool pairs = format == VideoFormat::NV12;
            const int line = pairs ? y / 2 : y / 4 * 2;
            if (line >= int(layout.lines[1]))
                return {};
            const int u = format == VideoFormat::YV12 ? 2 : 1;
            yuv = {at(0, y, x), pairs ? at(1, line, x / 2 * 2) : at(u, line, x / 2),
                   pairs ? at(1, line, x / 2 * 2 + 1) : at(3 - u, line, x / 2)};
        }
        const auto [r, g, b] = yuvReference(yuv[0] / 255.0, yuv[1] / 255.0, yuv[2] / 255.0, range);
        return {r, g, b, 255};
    }
};

std::vector<unsigned char> readTexture(GLuint texture, const QSize &size)
{
    auto *gl = QOpenGLContext::currentContext()->versionFunctions<QOpenGLFunctions_1_1>();
    gl->initializeOpenGLFunctions();
    std::vector<unsigned char> pixels(std::size_t(size.width() * size.height() * 4));
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

} // namespace

Q_DECLARE_METATYPE(VideoFormat)
Q_DECLARE_METATYPE(Range)

class TestFrameTransfer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void cleanup() { QCOMPARE(m_gl->context.functions()->glGetError(), GLenum(GL_NO_ERROR)); }

    void eachWay_data();
    void eachWay();
    void impossibleFramesAreRefused();
    void pixels_data();
    void pixels();
    void frameThatIsNeverShown();
    void nothingIsMadeBeforeTheFirstPicture();

private:
    std::unique_ptr<OffscreenGl> m_gl;
};

void TestFrameTransfer::initTestCase()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->ok);
}

void TestFrameTransfer::eachWay_data()
{
    QTest::addColumn<bool>("async");
    QTest::addColumn<QSize>("size");
    QTest::newRow("even size") << false << QSize(64, 32);
    QTest::newRow("odd size, nobody waits") << true << QSize(37, 19);
}

// What a context offers decides the way; `TAVRO_EXPECT_TRANSFER` names it for this run.
void TestFrameTransfer::eachWay()
{
    QFETCH(bool, async);
    QFETCH(QSize, size);
    const int expected = qEnvironmentVariableIntValue("TAVRO_EXPECT_TRANSFER");
    const bool pinned = async && m_gl->context.versionFunctions<QOpenGLFunctions_3_2_Core>()
        && m_gl->context.hasExtension("GL_AMD_pinned_memory");
    Texture texture(async);
    QCOMPARE(int(texture.transfer()),
             int(pinned         ? Texture::PinnedMemory
                     : expected ? Texture::Transfer(expected)
                                : Texture::PixelBuffer));
    m_gl->context.functions()->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    QVERIFY(texture.create());
    const int w = size.width();
    const int h = size.height();
    QVERIFY(texture.allocate(GL_TEXTURE_2D, GL_RGBA8, w, h, GL_RGBA, GL_UNSIGNED_BYTE));
    // Twice, so that the second picture replaces the first.
    for (int round = 1; round <= 2; ++round) {
        std::vector<unsigned char> picture(std::size_t(w * h * 4));
        for (std::size_t i = 0; i < picture.size(); ++i)
            picture[i] = static_cast<unsigned char>(i * 7 * round + i / 256);
        int stride = w * 4;
        if (void *memory = texture.map(&stride)) {
            for (int line = 0; line < h; ++line)
                std::memcpy(static_cast<char *>(memory) + line * stride, &picture[line * w * 4],
                            std::size_t(w * 4));
            texture.unmap();
        }
        texture.upload(async, GL_TEXTURE_2D, GL_RGBA8, w, h, GL_RGBA, GL_UNSIGNED_BYTE,
                       picture.data());
        texture.wait();
        QVERIFY(readTexture(texture.textureId(), size) == picture);
    }
    texture.destroy();
    QVERIFY(!texture.isValid());
}

void TestFrameTransfer::impossibleFramesAreRefused()
{
    for (const QSize size : {QSize(0, 0), QSize(-4, 8), QSize(1, 1), QSize(60000, 60000)})
        QVERIFY(!VideoFrameBuffers().setUp(VideoFormat::I420, size.width(), size.height()));
    QVERIFY(!VideoFrameBuffers().setUp(VideoFormat::None, 64, 32));
}

void TestFrameTransfer::pixels_data()
{
    QTest::addColumn<VideoFormat>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Range>("range");

    const std::pair<const char *, Range> ranges[] = {{"full range", Range::Full},
                                                     {"studio range", Range::Studio},
                                                     {"Tessarel", Range::Tessarel}};
    // Heights of all four remainders by 4, for the place of plane 2; odd widths, which are padded.
    const QSize sizes[] = {{64, 32}, {66, 33}, {70, 34}, {63, 35}, {321, 181}};
    for (int format = int(VideoFormat::BGRA); format <= int(VideoFormat::NV12); ++format) {
        for (const auto &[rangeName, range] : ranges) {
            for (const QSize &size : sizes)
                QTest::addRow("%s %dx%d %s", qPrintable(videoFormatName(VideoFormat(format))),
                              size.width(), size.height(), rangeName)
                    << VideoFormat(format) << size << range;
        }
    }
}

// Noise in the planes' format goes the whole way to RGB, as the player takes it. Red and blue
// change places, but for four-byte pixels, which are of that order already.
void TestFrameTransfer::pixels()
{
    QFETCH(VideoFormat, format);
    QFETCH(QSize, size);
    QFETCH(Range, range);
    DecoderTarget target;
    QVERIFY(target.makeCurrent(&m_gl->context, &m_gl->surface));
    QVERIFY(target.setUp(format, size, range == Range::Studio, range == Range::Tessarel));
    Planes planes{format, target.frame()->layout(), {}};
    planes.fillWithNoise();
    const std::array<void *, 3> memory = target.map();
    for (std::size_t plane = 0; plane < planes.bytes.size(); ++plane)
        std::memcpy(memory[plane], planes.bytes[plane].data(), planes.bytes[plane].size());
    target.commit();
    const std::vector<unsigned char> seen = readTexture(target.draw(), size);
    const GLenum error = QOpenGLContext::currentContext()->functions()->glGetError();
    target.drop();
    target.deleteContext();
    QVERIFY(m_gl->context.makeCurrent(&m_gl->surface));
    QCOMPARE(error, GLenum(GL_NO_ERROR));

    const int tolerance = isYuv(format) ? 2 : 0;
    int compared = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const std::vector<int> wanted = planes.pixel(x, y, range);
            const unsigned char *pixel = &seen[std::size_t((y * size.width() + x) * 4)];
            for (std::size_t channel = 0; channel < wanted.size(); ++channel) {
                if (std::abs(pixel[channel] - wanted[channel]) <= tolerance)
                    continue;
                qInfo("pixel %d,%d channel %zu", x, y, channel);
                QCOMPARE(int(pixel[channel]), wanted[channel]);
            }
            compared += !wanted.empty();
        }
    }
    QVERIFY(compared >= size.width() * (size.height() - 1));
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
