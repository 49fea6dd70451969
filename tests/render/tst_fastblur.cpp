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

    // Upright, unshifted and as bright as before; the second size replaces the first's framebuffer,
    // and the second eye stays in its half.
    void isAGaussian()
    {
        QOpenGLFunctions *gl = m_gl.functions();
        FastBlur blur;
        for (const QSize size : {QSize(64, 48), QSize(51, 70)}) {
            const QImage source = pattern(size);
            // Rows in the order of a framebuffer, lowest first.
            const auto texture = textureFrom(source.mirrored());
            QOpenGLFramebufferObject target(size.width() * 2, size.height());
            target.bind();
            gl->glClearColor(0, 1, 0, 1);
            gl->glClear(GL_COLOR_BUFFER_BIT);
            gl->glViewport(size.width(), 0, size.width(), size.height());
            blur.blur(gl, int(texture->textureId()), int(target.handle()), size);

            GLint bound = 0;
            gl->glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
            QCOMPARE(GLuint(bound), target.handle());
            QCOMPARE(gl->glGetError(), GLenum(GL_NO_ERROR));
            const QImage picture = target.toImage();
            QImage untouched(size, QImage::Format_RGB32);
            untouched.fill(Qt::green);
            QCOMPARE(picture.copy(QRect({0, 0}, size)).convertToFormat(QImage::Format_RGB32),
                     untouched);
            const auto result = PanoramaReference::compare(
                picture.copy(QRect({size.width(), 0}, size)), blurred(source), 3);
            QVERIFY2(result.share == 1.0, result.text().constData());
        }
    }

private:
    OffscreenContext m_gl;
};

QTEST_MAIN(tst_FastBlur)
#include "tst_fastblur.moc"
