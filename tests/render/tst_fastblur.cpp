// SPDX-License-Identifier: GPL-3.0-or-later
// The blur against a Gaussian computed on the CPU.

#include "render/FastBlur.h"
#include "tests/common/PanoramaQuad.h"

#include <QOpenGLFramebufferObject>
#include <QTest>
#include <QVector3D>

namespace {

/// The normal distribution of standard deviation 2.5 at the taps -7 to 7, whose outermost two take
/// what lies beyond them.
float weight(int tap)
{
    const auto density = [](int k) {
        return std::exp(-k * k / 12.5) / (2.5 * std::sqrt(2 * M_PI));
    };
    if (std::abs(tap) < 7)
        return float(density(tap));
    double inner = 0;
    for (int k = -6; k <= 6; ++k)
        inner += density(k);
    return float(1 - inner) / 2;
}

/// One direction, taps two pixels apart, edges repeated.
QImage blurred(const QImage &source, QPoint direction)
{
    QImage result(source.size(), QImage::Format_RGB32);
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            QVector3D sum;
            for (int k = -7; k <= 7; ++k) {
                const QRgb pixel =
                    source.pixel(qBound(0, x + 2 * k * direction.x(), source.width() - 1),
                                 qBound(0, y + 2 * k * direction.y(), source.height() - 1));
                sum += weight(k) * QVector3D(qRed(pixel), qGreen(pixel), qBlue(pixel));
            }
            result.setPixel(x, y, qRgb(qRound(sum.x()), qRound(sum.y()), qRound(sum.z())));
        }
    }
    return result;
}

} // namespace

class tst_FastBlur : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    // Upright, unshifted and as bright as before; the second size replaces the first's framebuffer,
    // and the second eye stays in its half.
    void isAGaussian()
    {
        const OffscreenContext context;
        QVERIFY(context.isValid());
        QOpenGLFunctions *gl = context.functions();
        FastBlur blur;
        for (const QSize size : {QSize(64, 48), QSize(51, 70)}) {
            const QImage source = PanoramaReference::testPanorama(size);
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
            const auto result =
                PanoramaReference::compare(picture.copy(QRect({size.width(), 0}, size)),
                                           blurred(blurred(source, {1, 0}), {0, 1}), 3);
            QVERIFY2(result.share == 1.0, result.text().constData());
        }
    }
};

QTEST_MAIN(tst_FastBlur)
#include "tst_fastblur.moc"
