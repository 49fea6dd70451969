// SPDX-License-Identifier: GPL-3.0-or-later
// Which picture files are let through to a decoder, and which are told to be damaged.
#include "app/ImageInspector.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

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

} // namespace

class TestImageInspector : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void letsThrough_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("through");
        const QByteArray jpeg = encoded("jpg", 32);
        QTest::newRow("JPEG") << jpeg << true;
        QTest::newRow("PNG under a wrong name") << encoded("png", 32) << true;
        QTest::newRow("text") << QByteArray("This is a letter, not a picture.\n") << false;
        QTest::newRow("nothing") << QByteArray() << false;
        // The size in the frame's header stands behind its length and its precision.
        const auto sized = [](QByteArray bytes, const char *side) {
            const int frame = qMax(bytes.indexOf("\xff\xc0"), bytes.indexOf("\xff\xc2"));
            return bytes.replace(frame + 5, 2, side, 2).replace(frame + 7, 2, side, 2);
        };
        // A progressive one is kept whole until its last scan, others scaled as they are decoded.
        const QByteArray progressive = encoded("jpg", 32, true);
        QTest::newRow("huge JPEG") << sized(jpeg, "\xff\xdc") << true;
        QTest::newRow("huge progressive JPEG") << sized(progressive, "\xff\xdc") << false;
        QTest::newRow("progressive JPEG of 8192 to a side") << sized(progressive, "\x20\0") << true;
    }

    void letsThrough()
    {
        QFETCH(QByteArray, content);
        QTEST(ImageInspector::canBeDecoded(make("a.jpg", content)), "through");
    }

    // A pipe that nobody writes and an endless device would hang.
    void pathThatIsNoFile()
    {
        const QString pipe = m_folder.filePath("pipe.jpg");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        const QString missing = m_folder.filePath("missing.jpg");
        for (const QString &path :
             {pipe, missing, m_folder.path(), QString("/dev/zero"), QString()})
            QVERIFY2(!ImageInspector::canBeDecoded(path), qPrintable(path));
    }

    void wholeJpeg_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray jpeg = encoded("jpg", 64);
        QTest::newRow("progressive") << encoded("jpg", 64, true);
        QTest::newRow("several blocks") << encoded("jpg", 512);
        QTest::newRow("bytes behind the end") << jpeg + QByteArray(100000, '\xff') + "tail";
        // As a camera embeds a thumbnail: a whole picture, with an end of its own.
        QTest::newRow("a cut thumbnail inside") << withSegment(jpeg, '\xe1', jpeg.left(500));
        QTest::newRow("a segment over a block's edge") << withSegment(
            withSegment(jpeg, '\xe2', QByteArray(65000, 'x')), '\xe2', QByteArray(65533, '\xff'));
        const auto beforeEnd = [&](const QByteArray &bytes) {
            return QByteArray(jpeg).insert(jpeg.size() - 2, bytes);
        };
        QTest::newRow("fill bytes before a marker") << beforeEnd("\xff\xff\xff");
        QTest::newRow("a restart marker in the scan") << beforeEnd("\xff\xd0");
        QTest::newRow("no JPEG") << encoded("png", 64).left(200);
        QTest::newRow("nothing") << QByteArray();
    }

    void wholeJpeg()
    {
        QFETCH(QByteArray, content);
        QVERIFY(!ImageInspector::isTruncatedJpeg(make("whole.jpg", content)));
    }

    void cutJpeg_data()
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

    void cutJpeg()
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
            QVERIFY2(ImageInspector::isTruncatedJpeg(path), qPrintable(QString::number(size)));
        }
    }

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

QTEST_GUILESS_MAIN(TestImageInspector)
#include "tst_imageinspector.moc"
