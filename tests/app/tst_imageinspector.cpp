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

#include <tuple>

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

using End = ImageInspector::JpegEnd;

class TestImageInspector : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void letsThrough()
    {
        const QByteArray jpeg = encoded("jpg", 32);
        const QByteArray progressive = encoded("jpg", 32, true);
        // The size in the frame's header stands behind its length and its precision.
        const auto sized = [](QByteArray bytes, const char *side) {
            const int frame = qMax(bytes.indexOf("\xff\xc0"), bytes.indexOf("\xff\xc2"));
            return bytes.replace(frame + 5, 2, side, 2).replace(frame + 7, 2, side, 2);
        };
        const std::tuple<const char *, QByteArray, bool> rows[] = {
            {"JPEG", jpeg, true},
            {"PNG under a wrong name", encoded("png", 32), true},
            {"text", "This is a letter, not a picture.\n", false},
            {"nothing", "", false},
            // A progressive one is kept whole until its last scan, others scaled while decoded.
            {"huge JPEG", sized(jpeg, "\xff\xdc"), true},
            {"huge progressive JPEG", sized(progressive, "\xff\xdc"), false},
            {"progressive JPEG of 8192 to a side", sized(progressive, "\x20\0"), true},
        };
        for (const auto &[name, content, through] : rows)
            QVERIFY2(ImageInspector::canBeDecoded(make(content)) == through, name);
    }

    // A pipe that nobody writes and an endless device would hang.
    void pathThatIsNoFile()
    {
        const QString pipe = m_folder.filePath("pipe.jpg");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &path :
             {pipe, QString("/missing.jpg"), m_folder.path(), QString("/dev/zero"), QString()})
            QVERIFY2(!ImageInspector::canBeDecoded(path), qPrintable(path));
    }

    void wholeJpeg()
    {
        const QByteArray jpeg = encoded("jpg", 64);
        const auto beforeEnd = [&](const QByteArray &bytes) {
            return QByteArray(jpeg).insert(jpeg.size() - 2, bytes);
        };
        const QByteArray edge = withSegment(jpeg, '\xe2', QByteArray(65000, 'x'));
        const std::pair<const char *, QByteArray> rows[] = {
            {"progressive", encoded("jpg", 64, true)},
            {"several blocks", encoded("jpg", 512)},
            {"bytes behind the end", jpeg + QByteArray(100000, '\xff') + "tail"},
            // As a camera embeds a thumbnail: a whole picture, with an end of its own.
            {"a cut thumbnail inside", withSegment(jpeg, '\xe1', jpeg.left(500))},
            {"a segment over a block's edge", withSegment(edge, '\xe2', QByteArray(65533, '\xff'))},
            {"fill bytes before a marker", beforeEnd("\xff\xff\xff")},
            {"a restart marker in the scan", beforeEnd("\xff\xd0")},
            {"no JPEG", encoded("png", 64).left(200)},
            {"nothing", ""},
        };
        for (const auto &[name, content] : rows)
            QVERIFY2(ImageInspector::endOfJpeg(make(content)) == End::Behind, name);
    }

    void cutJpeg()
    {
        const QByteArray jpeg = encoded("jpg", 24);
        // The last is where the picture's own scans begin to be looked for.
        const std::tuple<QByteArray, int, int> rows[] = {
            {jpeg, 1, 0},
            {encoded("jpg", 24, true), 1, 0},
            {withSegment(jpeg, '\xe1', jpeg), 5, jpeg.size()}, // a whole thumbnail inside
            {encoded("jpg", 512), 65536, 0}, // which the block that is read at once divides
        };
        for (const auto &[content, step, from] : rows) {
            const int scan = content.indexOf("\xff\xda", from);
            QFile file(make(content));
            QVERIFY(file.open(QIODevice::ReadWrite));
            // From the last byte down to the start of the image, which every JPEG has.
            QVector<int> sizes{content.size() - 1, content.size() - 2};
            for (int size = (content.size() - 3) / step * step; size >= 2; size -= step)
                sizes.append(size);
            for (int size : qAsConst(sizes)) {
                QVERIFY(file.resize(size));
                const End end = size < scan + 4 ? End::Before : End::Within;
                QVERIFY2(ImageInspector::endOfJpeg(file.fileName()) == end,
                         qPrintable(QString("%1 of %2").arg(size).arg(content.size())));
            }
        }
    }

private:
    QString make(const QByteArray &content)
    {
        QFile file(m_folder.filePath("a.jpg"));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestImageInspector)
#include "tst_imageinspector.moc"
