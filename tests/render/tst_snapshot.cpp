// SPDX-License-Identifier: GPL-3.0-or-later
// Sizes, folders, names and files of snapshots.
#include "render/Snapshot.h"
#include "render/VxShaderCodeBuilder.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class tst_Snapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void renderSize_data();
    void renderSize();
    void folder_data();
    void folder();
    void nameTellsKindAndTime();
    void eachSnapshotHasAFileOfItsOwn();
    void whatCannotBeSavedLeavesNothing_data();
    void whatCannotBeSavedLeavesNothing();
};

using Builder = VxShaderCodeBuilder;

void tst_Snapshot::renderSize_data()
{
    QTest::addColumn<QSize>("view");
    QTest::addColumn<QSize>("texture");
    QTest::addColumn<int>("limit");
    QTest::addColumn<float>("fov");
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("projection");
    QTest::addColumn<int>("eyes");
    QTest::addColumn<QSize>("expected");

    const QSize wide(1000, 500);
    const QSize tall(500, 1000);
    const QSize texture(7680, 3840);
    constexpr int kNone = 65536;
    const auto row = [](const char *name, QSize view, QSize source, int limit, float fov, int input,
                        int output, QSize expected, int eyes = 1) {
        QTest::newRow(name) << view << source << limit << fov << input << output << eyes
                            << expected;
    };
    row("rectilinear: a quarter of the sphere's width for 90 degrees of height", wide, texture,
        kNone, 90, Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {3840, 1920});
    row("a tall view has its field of view across", tall, texture, kNone, 90,
        Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {1920, 3840});
    row("fisheye as rectilinear", wide, texture, kNone, 180, Builder::EQUIRECTANGULAR,
        Builder::FISHEYE, {7680, 3840});
    row("little planet: three times", wide, {1000, 500}, kNone, 180, Builder::EQUIRECTANGULAR,
        Builder::LITTLE_PLANET, {3000, 1500});
    row("adaptive: once at 80 degrees", wide, {3600, 1800}, kNone, 80, Builder::EQUIRECTANGULAR,
        Builder::TAVRO, {1600, 800});
    row("adaptive: 9/7 at 120 degrees", wide, {2100, 1050}, kNone, 120, Builder::EQUIRECTANGULAR,
        Builder::TAVRO, {1800, 900});
    row("cube map as sphere", wide, texture, kNone, 90, Builder::CUBEMAP, Builder::RECTILINEAR,
        {3840, 1920});
    row("a flat source keeps the view's size", wide, texture, kNone, 180, Builder::STANDARD,
        Builder::TAVRO, wide);
    row("a fisheye source keeps the view's size", wide, texture, kNone, 90, Builder::FISHEYE_CIRCLE,
        Builder::TAVRO, wide);
    row("base sizes are cut, not rounded", {1000, 501}, {1111, 555}, kNone, 91,
        Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {560, 280});
    row("too wide for the GPU: both sides shrink", wide, texture, 1920, 90,
        Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {1920, 960});
    row("too high for the GPU: both sides shrink", tall, texture, 1920, 90,
        Builder::EQUIRECTANGULAR, Builder::RECTILINEAR, {960, 1920});
    row("two eyes share the GPU's width", wide, texture, 1920, 90, Builder::EQUIRECTANGULAR,
        Builder::RECTILINEAR, {960, 480}, 2);
    row("an unknown source size comes back", wide, {-1, -1}, kNone, 90, Builder::EQUIRECTANGULAR,
        Builder::RECTILINEAR, {-1, -1});
}

void tst_Snapshot::renderSize()
{
    QFETCH(QSize, view);
    QFETCH(QSize, texture);
    QFETCH(int, limit);
    QFETCH(float, fov);
    QFETCH(int, source);
    QFETCH(int, projection);
    QFETCH(int, eyes);
    QFETCH(QSize, expected);
    if (texture.width() < 0)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Invalid size")));
    QCOMPARE(
        Snapshot::renderSize({view, texture, QSize(limit, limit), fov, source, projection, eyes}),
        expected);
}

void tst_Snapshot::folder_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<QString>("expected");
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    QTest::newRow("a URL, as the folder dialog gives it") << "file:///data/my%20shots"
                                                          << "/data/my shots";
    QTest::newRow("a path") << "/data/50% #1"
                            << "/data/50% #1";
    QTest::newRow("never set") << "toBeDefine" << pictures;
    QTest::newRow("emptied") << "" << pictures;
}

void tst_Snapshot::folder()
{
    QFETCH(QString, setting);
    QTEST(Snapshot::folder(setting), "expected");
}

void tst_Snapshot::nameTellsKindAndTime()
{
    const QDateTime time(QDate(2016, 3, 20), QTime(12, 30, 5, 7));
    QCOMPARE(Snapshot::fileName(false, time),
             QStringLiteral("VXSNP_snap_2016-03-20_12_30_05_7.png"));
    QCOMPARE(Snapshot::fileName(true, time),
             QStringLiteral("VXSNP_render_2016-03-20_12_30_05_7.png"));
}

void tst_Snapshot::eachSnapshotHasAFileOfItsOwn()
{
    QTemporaryDir scratch;
    const QString folder = scratch.filePath(QStringLiteral("new/folder"));
    QImage image(8, 4, QImage::Format_RGB32);
    QStringList paths;
    // Far more than one in a millisecond.
    for (int i = 0; i < 20; ++i) {
        image.fill(QColor(i, 0, 0));
        paths.append(Snapshot::save(image, false, folder));
    }
    QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 20);
    for (int i = 0; i < 20; ++i)
        QCOMPARE(QImage(paths.at(i)).pixelColor(0, 0).red(), i);
}

void tst_Snapshot::whatCannotBeSavedLeavesNothing_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("empty");
    QTest::newRow("a folder that cannot be made") << "/proc/no/such" << false;
    QTest::newRow("a folder that takes no files") << "/proc" << false;
    QTest::newRow("no picture") << QDir::tempPath() << true;
}

void tst_Snapshot::whatCannotBeSavedLeavesNothing()
{
    QFETCH(QString, folder);
    QFETCH(bool, empty);
    QCOMPARE(Snapshot::save(empty ? QImage() : QImage(8, 4, QImage::Format_RGB32), true, folder),
             QString());
}

QTEST_GUILESS_MAIN(tst_Snapshot)

#include "tst_snapshot.moc"
