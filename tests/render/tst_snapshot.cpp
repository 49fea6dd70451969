// SPDX-License-Identifier: GPL-3.0-or-later
// Sizes, folders, names and files of snapshots.
#include "render/Snapshot.h"
#include "render/VxShaderCodeBuilder.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/resource.h>

#include <csignal>

using Builder = VxShaderCodeBuilder;

class tst_Snapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void renderSize()
    {
        constexpr int kNone = 65536;
        constexpr int kSphere = Builder::EQUIRECTANGULAR;
        constexpr int kFlat = Builder::RECTILINEAR;
        const QSize wide(1000, 500);
        const QSize tall(500, 1000);
        const QSize texture(7680, 3840);
        const auto size = [](QSize view, QSize source, int limit, float fov, int input, int output,
                             int eyes = 1) {
            const QSize most(limit, limit);
            return Snapshot::renderSize({view, source, most, fov, input, output, eyes});
        };
        // A quarter of the sphere's width for 90 degrees of height, or of width in a tall view.
        QCOMPARE(size(wide, texture, kNone, 90, kSphere, kFlat), QSize(3840, 1920));
        QCOMPARE(size(tall, texture, kNone, 90, kSphere, kFlat), QSize(1920, 3840));
        QCOMPARE(size(wide, texture, kNone, 90, Builder::CUBEMAP, kFlat), QSize(3840, 1920));
        QCOMPARE(size(wide, texture, kNone, 180, kSphere, Builder::FISHEYE), QSize(7680, 3840));
        // Three times for the little planet, once to three times for the adaptive projection.
        QCOMPARE(size(wide, {1000, 500}, kNone, 180, kSphere, Builder::LITTLE_PLANET),
                 QSize(3000, 1500));
        QCOMPARE(size(wide, {3600, 1800}, kNone, 80, kSphere, Builder::TAVRO), QSize(1600, 800));
        // Flat and fisheye sources keep the view's size.
        QCOMPARE(size(wide, texture, kNone, 180, Builder::STANDARD, Builder::TAVRO), wide);
        QCOMPARE(size(wide, texture, kNone, 90, Builder::FISHEYE_CIRCLE, Builder::TAVRO), wide);
        // Base sizes are cut, not rounded.
        QCOMPARE(size({1000, 501}, {1111, 555}, kNone, 91, kSphere, kFlat), QSize(560, 280));
        // Too large for the GPU: both sides shrink, and two eyes share its width.
        QCOMPARE(size(tall, texture, 1920, 90, kSphere, kFlat), QSize(960, 1920));
        QCOMPARE(size(wide, texture, 1920, 90, kSphere, kFlat, 2), QSize(960, 480));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Invalid size"));
        QCOMPARE(size(wide, {-1, -1}, kNone, 90, kSphere, kFlat), QSize(-1, -1));
    }

    void folder()
    {
        const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
        QCOMPARE(Snapshot::folder("file:///data/my%20shots"), QString("/data/my shots"));
        QCOMPARE(Snapshot::folder("/data/50% #1"), QString("/data/50% #1"));
        QCOMPARE(Snapshot::folder("toBeDefine"), pictures);
        QCOMPARE(Snapshot::folder(""), pictures);
    }

    void nameTellsKindAndTime()
    {
        const QDateTime time(QDate(2016, 3, 20), QTime(12, 30, 5, 7));
        QCOMPARE(Snapshot::fileName(false, time), "VXSNP_snap_2016-03-20_12_30_05_7.png");
        QCOMPARE(Snapshot::fileName(true, time), "VXSNP_render_2016-03-20_12_30_05_7.png");
    }

    void eachSnapshotHasAFileOfItsOwn()
    {
        QTemporaryDir scratch;
        const QString folder = scratch.filePath("new/folder");
        QImage image(8, 4, QImage::Format_RGB32);
        QStringList paths;
        // Far more than one in a millisecond.
        for (int i = 0; i < 20; ++i) {
            image.fill(QColor(i, 0, 0));
            paths.append(Snapshot::save(image, false, folder).path);
        }
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 20);
        for (int i = 0; i < 20; ++i)
            QCOMPARE(QImage(paths.at(i)).pixelColor(0, 0).red(), i);
    }

    void whatCannotBeSavedLeavesNothing()
    {
        const QImage image(8, 4, QImage::Format_RGB32);
        QTemporaryDir scratch;
        QFile taken(scratch.filePath("file"));
        QVERIFY(taken.open(QIODevice::WriteOnly));
        for (const QString &folder : {QString("/proc"), taken.fileName()}) { // these take no files
            const Snapshot::Saved saved = Snapshot::save(image, true, folder);
            QVERIFY(saved.path.isEmpty() && !saved.error.isEmpty());
        }
        // A disk that is full in the middle of the picture.
        rlimit before = {};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        signal(SIGXFSZ, SIG_IGN);
        const rlimit little{100, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &little), 0);
        QImage noise(256, 256, QImage::Format_RGB32);
        QRandomGenerator(1).fillRange(reinterpret_cast<quint32 *>(noise.bits()), 256 * 256);
        const Snapshot::Saved saved = Snapshot::save(noise, true, scratch.path());
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
        QVERIFY2(saved.error.contains("too large"), qPrintable(saved.error));
        QCOMPARE(QDir(scratch.path()).entryList(QDir::Files | QDir::Hidden), QStringList("file"));
        QVERIFY(!Snapshot::save(QImage(), true, QDir::tempPath()).error.isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_Snapshot)
#include "tst_snapshot.moc"
