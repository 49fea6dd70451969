// SPDX-License-Identifier: GPL-3.0-or-later
// The blur against a Gaussian computed on the CPU.

#include "render/FastBlur.h"
#include "tests/common/PanoramaQuad.h"

#include <QOpenGLFramebufferObject>
#include <QTest>

#include <array>

namespace {

/// Grey noise over a slope, so that a turned or mirrored picture differs everywhere.
QImage pattern(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    uint state = 1;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            state = state * 1664525U + 1013904223U;
            image.setPixel(x, y,
                           qRgb(int(state >> 25), 255 * x / size.width(), 255 * y / size.height()));
        }
    }
    return image;
}

/// The normal distribution of standard deviation 2.5 at the taps, whose outermost two take what
/// lies beyond them.
std::array<double, 15> weights()
{
    std::array<double, 15> result{};
    double inner = 0;
    for (int k = -6; k <= 6; ++k) {
        const double weight = std::exp(-k * k / 12.5) / (2.5 * std::sqrt(2 * M_PI));
        result[size_t(k + 7)] = weight;
        inner += weight;
    }
    result.front() = result.back() = (1 - inner) / 2;
    return result;
}

/// One direction, taps two pixels apart, edges repeated.
QImage blurred(const QImage &source, QPoint direction)
{
    QImage result(source.size(), QImage::Format_RGB32);
    const auto taps = weights();
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            double red = 0;
            double green = 0;
            double blue = 0;
            for (int k = -7; k <= 7; ++k) {
                const QRgb pixel =
                    source.pixel(qBound(0, x + 2 * k * direction.x(), source.width() - 1),
                                 qBound(0, y + 2 * k * direction.y(), source.height() - 1));
                red += taps[size_t(k + 7)] * qRed(pixel);
                green += taps[size_t(k + 7)] * qGreen(pixel);
                blue += taps[size_t(k + 7)] * qBlue(pixel);
            }
            result.setPixel(x, y, qRgb(qRound(red), qRound(green), qRound(blue)));
        }
    }
    return result;
}

QImage blurred(const QImage &source)
{
    return blurred(blurred(source, {1, 0}), {0, 1});
}

} // namespace

class tst_FastBlur : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QVERIFY(m_gl.isValid()); }

    void isAGaussian();
    void secondEyeStaysInItsHalf();

private:
    void compare(const QImage &actual, const QImage &expected);

    OffscreenContext m_gl;
};

void tst_FastBlur::compare(const QImage &actual, const QImage &expected)
{
    const auto result = PanoramaReference::compare(actual, expected, 3);
    QVERIFY2(result.share == 1.0,
             qPrintable(QStringLiteral("%1 of the pixels are near, worst %2 at %3,%4")
                            .arg(result.share)
                            .arg(result.worst)
                            .arg(result.worstAt.x())
                            .arg(result.worstAt.y())));
}

// Upright, unshifted and as bright as before; the second size replaces the first's framebuffer.
void tst_FastBlur::isAGaussian()
{
    FastBlur blur;
    for (const QSize size : {QSize(64, 48), QSize(51, 70)}) {
        const QImage source = pattern(size);
        // Rows in the order of a framebuffer, lowest first.
        const auto texture = textureFrom(source.mirrored());
        QOpenGLFramebufferObject target(size);
        m_gl.functions()->glViewport(0, 0, size.width(), size.height());
        blur.blur(m_gl.functions(), int(texture->textureId()), int(target.handle()), size);

        GLint bound = 0;
        m_gl.functions()->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        QCOMPARE(GLuint(bound), target.handle());
        QCOMPARE(m_gl.functions()->glGetError(), GLenum(GL_NO_ERROR));
        compare(target.toImage(), blurred(source));
        if (QTest::currentTestFailed())
            return;
    }
}

void tst_FastBlur::secondEyeStaysInItsHalf()
{
    const QSize eye(40, 30);
    const QImage source = pattern(eye);
    const auto texture = textureFrom(source.mirrored());
    QOpenGLFramebufferObject target(eye.width() * 2, eye.height());
    target.bind();
    m_gl.functions()->glClearColor(0, 1, 0, 1);
    m_gl.functions()->glClear(GL_COLOR_BUFFER_BIT);
    m_gl.functions()->glViewport(eye.width(), 0, eye.width(), eye.height());
    FastBlur blur;
    blur.blur(m_gl.functions(), int(texture->textureId()), int(target.handle()), eye);

    const QImage picture = target.toImage();
    QImage untouched(eye, QImage::Format_RGB32);
    untouched.fill(Qt::green);
    compare(picture.copy(0, 0, eye.width(), eye.height()), untouched);
    compare(picture.copy(eye.width(), 0, eye.width(), eye.height()), blurred(source));
}

QTEST_MAIN(tst_FastBlur)
#include "tst_fastblur.moc"
