// SPDX-License-Identifier: GPL-3.0-or-later
// The picture that is decoded ahead is the one that Qt's reader gives, and what cannot be decoded
// ahead is left to it.
#include "app/DetachedThread.h"
#include "app/JpegDecoder.h"
#include "app/PicturePrefetch.h"

#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

QImage gradient(QImage::Format format)
{
    QImage image(131, 67, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x, y * 3, 255 - x));
    }
    return image.convertToFormat(format);
}

} // namespace

class TestPrefetch : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void givesTheSamePicture_data()
    {
        QTest::addColumn<QImage::Format>("format");
        for (const char *file : {"a.jpg", "progressive.JPEG", "on its side.jpg", "a.png"})
            QTest::newRow(file) << QImage::Format_RGB32;
        QTest::newRow("grey.jpg") << QImage::Format_Grayscale8;
    }

    void givesTheSamePicture()
    {
        QFETCH(QImage::Format, format);
        const QString name = QTest::currentDataTag();
        const QString path = m_folder.filePath(name);
        const bool isTurned = name.startsWith("on its side");
        QImageWriter writer(path);
        writer.setProgressiveScanWrite(name.startsWith("progressive"));
        if (isTurned)
            writer.setTransformation(QImageIOHandler::TransformationRotate90);
        QVERIFY(writer.write(gradient(format)));
        QCOMPARE(JpegDecoder::decode(QFile::encodeName(path), 200).isNull(), name == "a.png");

        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QImage expected = reader.read().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(expected.width() < expected.height(), isTurned);
        PicturePrefetch prefetch(path);
        prefetch.continueWithPlugins();
        QSize size;
        const QImage picture = prefetch.requestImage("picture", &size, QSize());
        QCOMPARE(picture.convertToFormat(QImage::Format_RGB32), expected);
        QCOMPARE(size, expected.size());
        // The second time it reads the file: the first picture is no longer kept.
        QCOMPARE(prefetch.requestImage("picture", &size, QSize(50, 50)).size(),
                 expected.size().scaled(50, 50, Qt::KeepAspectRatio));
    }

    void leavesToQt()
    {
        const QByteArray path = QFile::encodeName(m_folder.filePath("whole.jpg"));
        QVERIFY(gradient(QImage::Format_RGB32).save(path));
        QVERIFY(JpegDecoder::decode(path, 130).isNull()); // too wide
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        for (const qint64 size : {file.size() - 2, file.size() / 2, qint64(0)}) {
            QVERIFY(file.resize(size));
            QVERIFY(JpegDecoder::decode(path, 200).isNull());
        }
        file.write("Dear reader");
        file.flush();
        QVERIFY(JpegDecoder::decode(path, 200).isNull());
        // A pipe that nobody writes would hang.
        const QByteArray pipe = QFile::encodeName(m_folder.filePath("pipe.jpg"));
        QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
        QVERIFY(JpegDecoder::decode(pipe, 200).isNull());
    }

    void servesOneFileOnce()
    {
        const QString path = m_folder.filePath("begun.png");
        QVERIFY(gradient(QImage::Format_RGB32).save(path));
        for (const char *other : {"http://localhost/a.jpg", "/drawing.svg", "/film.MP4"})
            QVERIFY2(!PicturePrefetch::begin(other), other);
        const auto prefetch = PicturePrefetch::begin(path);
        QVERIFY(prefetch);
        const QUrl other = QUrl::fromLocalFile("/somewhere/else.png");
        QCOMPARE(prefetch->source(other), other);
        const QUrl file = QUrl::fromLocalFile(path);
        QCOMPARE(prefetch->source(file).scheme(), QString("image"));
        QCOMPARE(prefetch->source(file), file);
    }

    // What a thread still uses must not go before it.
    void cleanupTestCase() { QTRY_VERIFY(!DetachedThread::isAtWork()); }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestPrefetch)
#include "tst_prefetch.moc"
