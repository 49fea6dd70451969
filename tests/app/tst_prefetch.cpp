// SPDX-License-Identifier: GPL-3.0-or-later
// The picture that is decoded ahead is the one that Qt's reader gives, and what cannot be decoded
// ahead is left to it.
#include "app/JpegDecoder.h"
#include "app/PicturePrefetch.h"

#include <QElapsedTimer>
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
    void givesTheSamePicture_data();
    void givesTheSamePicture();
    void leavesToQt_data();
    void leavesToQt();
    void waitsForNoPipe();
    void servesOneFileOnce();

private:
    QTemporaryDir m_folder;
};

void TestPrefetch::givesTheSamePicture_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<bool>("progressive");
    QTest::addColumn<int>("turned");
    QTest::addColumn<bool>("isDecodedHere");
    QTest::newRow("JPEG") << "a.jpg" << QImage::Format_RGB32 << false << 0 << true;
    QTest::newRow("progressive JPEG") << "b.JPEG" << QImage::Format_RGB32 << true << 0 << true;
    QTest::newRow("grey JPEG") << "c.jpg" << QImage::Format_Grayscale8 << false << 0 << true;
    QTest::newRow("JPEG on its side") << "d.jpg" << QImage::Format_RGB32 << false << 90 << true;
    QTest::newRow("PNG") << "e.png" << QImage::Format_RGB32 << false << 0 << false;
}

void TestPrefetch::givesTheSamePicture()
{
    QFETCH(QString, name);
    QFETCH(QImage::Format, format);
    QFETCH(bool, progressive);
    QFETCH(int, turned);
    const QString path = m_folder.filePath(name);
    QImageWriter writer(path);
    writer.setProgressiveScanWrite(progressive);
    if (turned != 0)
        writer.setTransformation(QImageIOHandler::TransformationRotate90);
    QVERIFY(writer.write(gradient(format)));
    QTEST(!JpegDecoder::decode(QFile::encodeName(path), 200).isNull(), "isDecodedHere");

    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage expected = reader.read().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(expected.width() < expected.height(), turned != 0);
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

void TestPrefetch::leavesToQt_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("maxSide");
    const QString path = m_folder.filePath("whole.jpg");
    QVERIFY(gradient(QImage::Format_RGB32).save(path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    QTest::newRow("truncated") << whole.left(whole.size() / 2) << 200;
    QTest::newRow("without end") << whole.chopped(2) << 200;
    QTest::newRow("no JPEG") << QByteArray("Dear reader") << 200;
    QTest::newRow("empty") << QByteArray() << 200;
    QTest::newRow("too wide") << whole << 130;
}

void TestPrefetch::leavesToQt()
{
    QFETCH(QByteArray, content);
    QFETCH(int, maxSide);
    QFile file(m_folder.filePath("content.jpg"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
    file.close();
    QVERIFY(JpegDecoder::decode(QFile::encodeName(file.fileName()), maxSide).isNull());
}

void TestPrefetch::waitsForNoPipe()
{
    const QString path = m_folder.filePath("pipe.jpg");
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(JpegDecoder::decode(QFile::encodeName(path), 200).isNull());
    QVERIFY(timer.elapsed() < 2000);
}

void TestPrefetch::servesOneFileOnce()
{
    const QString path = m_folder.filePath("begun.png");
    QVERIFY(gradient(QImage::Format_RGB32).save(path));
    QVERIFY(!PicturePrefetch::begin("http://localhost/a.jpg"));
    QVERIFY(!PicturePrefetch::begin("/somewhere/drawing.svg"));
    QVERIFY(!PicturePrefetch::begin("/somewhere/film.MP4"));
    const auto prefetch = PicturePrefetch::begin(path);
    QVERIFY(prefetch);
    const QUrl other = QUrl::fromLocalFile("/somewhere/else.png");
    QCOMPARE(prefetch->source(other), other);
    const QUrl file = QUrl::fromLocalFile(path);
    QCOMPARE(prefetch->source(file).scheme(), QString("image"));
    QCOMPARE(prefetch->source(file), file);
}

QTEST_GUILESS_MAIN(TestPrefetch)
#include "tst_prefetch.moc"
