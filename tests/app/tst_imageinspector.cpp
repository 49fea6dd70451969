// SPDX-License-Identifier: GPL-3.0-or-later
// Which picture files are let through to a decoder, and which are told to be damaged.
#include "app/ImageInspector.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImage>
#include <QImageWriter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

const QByteArray kEndOfImage("\xff\xd9", 2);

/// Noise, which does not compress: large files from small pictures.
QImage noise(int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    QRandomGenerator random(1);
    random.fillRange(reinterpret_cast<quint32 *>(image.bits()), side * side);
    return image;
}

QByteArray encoded(const char *format, int side, bool progressive = false)
{
    QBuffer buffer;
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(progressive);
    writer.setQuality(80);
    return writer.write(noise(side)) ? buffer.data() : QByteArray();
}

/// A segment with a marker and a length, to stand behind the start of a JPEG.
QByteArray withSegment(const QByteArray &jpeg, char marker, const QByteArray &content)
{
    QByteArray segment("\xff", 1);
    segment += marker;
    segment += char((content.size() + 2) >> 8);
    segment += char(content.size() + 2);
    return jpeg.left(2) + segment + content + jpeg.mid(2);
}

quint32 crc32(const QByteArray &data)
{
    quint32 crc = ~0U;
    for (char byte : data) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (crc & 1 ? 0xEDB88320U : 0);
    }
    return ~crc;
}

QByteArray bigEndian(quint32 value)
{
    return QByteArray{}
        .append(char(value >> 24))
        .append(char(value >> 16))
        .append(char(value >> 8))
        .append(char(value));
}

/// A PNG that claims a size and holds no pixel of it.
QByteArray pngHeader(quint32 side)
{
    const QByteArray header =
        "IHDR" + bigEndian(side) + bigEndian(side) + QByteArray("\x08\x06\x00\x00\x00", 5);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + bigEndian(13) + header + bigEndian(crc32(header))
        + bigEndian(0) + "IDAT" + bigEndian(crc32("IDAT"));
}

} // namespace

class TestImageInspector : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void letsThrough_data();
    void letsThrough();
    void pathThatIsNoFile_data();
    void pathThatIsNoFile();
    void wholeJpeg_data();
    void wholeJpeg();
    void cutJpeg_data();
    void cutJpeg();

private:
    QString make(const QString &name, const QByteArray &content)
    {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

void TestImageInspector::letsThrough_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("through");
    const QByteArray jpeg = encoded("jpg", 32);
    QTest::newRow("JPEG") << jpeg << true;
    QTest::newRow("PNG under a wrong name") << encoded("png", 32) << true;
    QTest::newRow("text") << QByteArray("This is a letter, not a picture.\n") << false;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("zeroes") << QByteArray(4096, '\0') << false;
    QTest::newRow("as many pixels as a panorama has") << pngHeader(8192) << true;
    QTest::newRow("more pixels than any memory") << pngHeader(500000) << false;
    // The size of the frame's header, which stands behind its length and its precision.
    const auto huge = [](QByteArray bytes) {
        const int frame = qMax(bytes.indexOf("\xff\xc0"), bytes.indexOf("\xff\xc2"));
        return bytes.replace(frame + 5, 4, "\xff\xdc\xff\xdc");
    };
    QTest::newRow("a huge JPEG, which is scaled while it is decoded") << huge(jpeg) << true;
    QTest::newRow("a huge JPEG that is kept whole until its last scan")
        << huge(encoded("jpg", 32, true)) << false;
}

void TestImageInspector::letsThrough()
{
    QFETCH(QByteArray, content);
    QTEST(ImageInspector::canBeDecoded(make("a.jpg", content)), "through");
}

void TestImageInspector::pathThatIsNoFile_data()
{
    QTest::addColumn<QString>("path");
    const QString pipe = m_folder.filePath("pipe.jpg");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QTest::newRow("missing") << m_folder.filePath("missing.jpg");
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("pipe that nobody writes") << pipe;
    QTest::newRow("endless device") << "/dev/zero";
    QTest::newRow("no path") << "";
}

void TestImageInspector::pathThatIsNoFile()
{
    QFETCH(QString, path);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!ImageInspector::canBeDecoded(path));
    QVERIFY(timer.elapsed() < 2000);
}

void TestImageInspector::wholeJpeg_data()
{
    QTest::addColumn<QByteArray>("content");
    const QByteArray jpeg = encoded("jpg", 64);
    QVERIFY(jpeg.endsWith(kEndOfImage));
    QTest::newRow("baseline") << jpeg;
    QTest::newRow("progressive") << encoded("jpg", 64, true);
    QTest::newRow("several blocks") << encoded("jpg", 512);
    QTest::newRow("bytes behind the end") << jpeg + QByteArray(100000, '\xff') + "tail";
    // As a camera embeds a thumbnail: a whole picture, with an end of its own.
    QTest::newRow("a cut thumbnail inside") << withSegment(jpeg, '\xe1', jpeg.left(500));
    QTest::newRow("a whole thumbnail inside") << withSegment(jpeg, '\xe1', jpeg);
    QTest::newRow("a segment over a block's edge") << withSegment(
        withSegment(jpeg, '\xe2', QByteArray(65000, 'x')), '\xe2', QByteArray(65533, '\xff'));
    QTest::newRow("fill bytes before a marker")
        << QByteArray(jpeg).insert(jpeg.size() - 2, QByteArray(3, '\xff'));
    QTest::newRow("a restart marker in the scan")
        << QByteArray(jpeg).insert(jpeg.size() - 2, "\xff\xd0");
    QTest::newRow("no JPEG") << encoded("png", 64).left(200);
    QTest::newRow("nothing") << QByteArray();
}

void TestImageInspector::wholeJpeg()
{
    QFETCH(QByteArray, content);
    QVERIFY(!ImageInspector::isTruncatedJpeg(make("whole.jpg", content)));
}

void TestImageInspector::cutJpeg_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("step");
    const QByteArray jpeg = encoded("jpg", 24);
    QTest::newRow("baseline") << jpeg << 1;
    QTest::newRow("progressive") << encoded("jpg", 24, true) << 1;
    QTest::newRow("a whole thumbnail inside") << withSegment(jpeg, '\xe1', jpeg) << 5;
    // The block that the reader takes at once divides this step.
    QTest::newRow("several blocks") << encoded("jpg", 512) << 65536;
}

void TestImageInspector::cutJpeg()
{
    QFETCH(QByteArray, content);
    QFETCH(int, step);
    const QString path = make("cut.jpg", content);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    // From the last byte down to the start of the image, which every JPEG has.
    QVector<int> sizes{content.size() - 1, content.size() - 2};
    for (int size = (content.size() - 3) / step * step; size >= 2; size -= step)
        sizes.append(size);
    for (int size : qAsConst(sizes)) {
        QVERIFY(file.resize(size));
        QVERIFY2(ImageInspector::isTruncatedJpeg(path),
                 qPrintable(QString("cut to %1 of %2 bytes").arg(size).arg(content.size())));
    }
}

QTEST_GUILESS_MAIN(TestImageInspector)
#include "tst_imageinspector.moc"
