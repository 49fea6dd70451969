// SPDX-License-Identifier: GPL-3.0-or-later
// What a track says about a panorama, and which of its sources is believed.
#include "columns.h"
#include "movie.h"
#include "movparser/src/atom_moov.h"
#include "movparser/src/video_sample_description.h"

using namespace Tavro::MovParserLib;

namespace {

Box proj(const QList<Box> &children)
{
    return TestTrack::with(Box("proj").child(Box::full("prhd").zeros(12)), children);
}

Box pose(std::initializer_list<uint32_t> angles)
{
    return Box("sv3d").child(Box("proj").child(Box::full("prhd").words(angles)));
}

const Box kEqui = Box::full("equi").zeros(16);
const Box kCube = Box::full("cbmp").zeros(8);

Box document(const QByteArray &text)
{
    return Box("uuid").zeros(16).raw(text);
}

QByteArray element(const char *name, const QByteArray &value)
{
    return QByteArray("<GSpherical:") + name + '>' + value + "</GSpherical:" + name + '>';
}

/// A video track whose list of descriptions is empty, so that its document speaks.
TestTrack undescribed(const QByteArray &text)
{
    TestTrack track;
    track.tables.append(Box::full("stsd").u32(0));
    track.children = {document(text)};
    return track;
}

TestTrack described(const QList<Box> &descriptionChildren, const QList<Box> &children = {})
{
    TestTrack track;
    track.descriptionChildren = descriptionChildren;
    track.children = children;
    return track;
}

QString told(uint32_t stereoMode, uint32_t projection, const QString &pose, const QString &tool)
{
    return QStringLiteral("stereo %1, projection %2, pose %3, tool '%4'")
        .arg(stereoMode)
        .arg(projection)
        .arg(pose, tool);
}

QString ask(const TrackAtom &track)
{
    uint32_t stereoMode = 99;
    uint32_t projection = 99;
    float yaw = 99;
    float pitch = 99;
    float roll = 99;
    std::string tool = "untouched";
    const bool asked = track.GetStereoMode(&stereoMode) == MovAtom::ERROR_OKAY
        && track.GetProjection(&projection) == MovAtom::ERROR_OKAY
        && track.GetInitialPose(&yaw, &pitch, &roll) == MovAtom::ERROR_OKAY
        && track.GetWritingTool(&tool, nullptr) == MovAtom::ERROR_OKAY;
    const QString pose = QStringLiteral("%1/%2/%3").arg(yaw).arg(pitch).arg(roll);
    return asked ? told(stereoMode, projection, pose, QString::fromStdString(tool)) : "refused";
}

bool read(const Box &box, MovieAtom *movie)
{
    return movie->Read(*ExactBuffer(box)) == MovAtom::ERROR_OKAY;
}

} // namespace

class tst_Spherical : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void settersWriteBothGenerations();
    void aPoseIsKeptWithinItsLimits_data();
    void aPoseIsKeptWithinItsLimits();
    void settersNeedAPlace();
};

void tst_Spherical::answers_data()
{
    const auto addRow = columns<QByteArray, QString>("moov", "expected");
    const auto row = [&addRow](const char *name, const TestTrack &track, uint32_t stereoMode,
                               uint32_t projection, const char *tool = "untouched",
                               const char *pose = "0/0/0") {
        addRow(name, movie({track}), told(stereoMode, projection, pose, QString::fromLatin1(tool)));
    };
    const auto stereo = [](int mode) { return described({Box::full("st3d").u8(uint64_t(mode))}); };
    const auto projected = [](const QList<Box> &children) {
        return described({Box("sv3d").child(proj(children))});
    };
    row("nothing said", described({}), 0, 0);
    row("st3d 1 is top-bottom", stereo(1), 2, 0);
    row("st3d 2 is left-right", stereo(2), 1, 0);
    row("st3d 3 is nothing", stereo(3), 0, 0);
    row("equi", projected({kEqui}), 0, 1, "");
    row("cbmp", projected({kCube}), 0, 256, "");
    row("equi wins over cbmp", projected({kCube, kEqui}), 0, 1, "");
    row("neither equi nor cbmp", projected({Box("mshp").zeros(9)}), 0, 0, "");
    row("a zero size ends proj", projected({Box("free").claims(0), kEqui}), 0, 0, "");
    row("the tool is the svhd's text",
        described({Box("sv3d")
                       .child(Box("free").u8(1))
                       .child(Box::full("svhd").raw(QByteArray("a tool\0rest", 11)))}),
        0, 0, "a tool");
    row("fractions of a degree are cut off",
        described({pose({0x005A8000, 0xFFA58001, 0x0000FFFF})}), 0, 0, "", "90/-90/0");
    row("a readable description silences the document",
        described({}, {document('x' + element("StereoMode", "left-right"))}), 0, 0);
    row("the document speaks for a track without description",
        undescribed('x' + element("StereoMode", "top-bottom")
                    + element("StitchingSoftware", "stitcher")
                    + element("InitialViewHeadingDegrees", "90")),
        2, 1, "stitcher");
    row("a foreign uuid reads as an empty document", undescribed("no xml\xFF"), 0, 1, "");
    row("a tag at the very beginning does not count",
        undescribed(element("StereoMode", "left-right")), 0, 1, "");
    row("the last of several elements counts",
        undescribed('x' + element("StereoMode", "left-right")
                    + element("StereoMode", "top-bottom")),
        2, 1, "");
    row("each byte of the software is a character",
        undescribed('x' + element("StitchingSoftware", "K\u00e4fer")), 0, 1, "K\u00e4fer");
    row("the document ends at a 0 byte",
        undescribed(QByteArray("x\0", 2) + element("StereoMode", "left-right")), 0, 1, "");
    TestTrack second;
    second.tables.append(Box::full("stsd")
                             .u32(2)
                             .raw(second.descriptions().bytes().mid(16))
                             .raw(stereo(1).descriptions().bytes().mid(16)));
    row("only the first description counts", second, 0, 0);
}

void tst_Spherical::answers()
{
    QFETCH(QByteArray, moov);
    MovieAtom movie;
    QCOMPARE(movie.Read(*ExactBuffer(moov)), MovAtom::ERROR_OKAY);
    QTEST(ask(movie.tracks.front()), "expected");
}

void tst_Spherical::settersWriteBothGenerations()
{
    MovieAtom movie;
    QVERIFY(read(::movie(), &movie));
    TrackAtom &track = movie.tracks.front();
    QCOMPARE(track.SetStereoMode(2), MovAtom::ERROR_OKAY);
    QVERIFY(!track.spherical); // this one alone does not make a document
    QCOMPARE(track.SetInitialPose(90.9f, -45, 10), MovAtom::ERROR_OKAY);
    QCOMPARE(track.SetEquirectangular(1, 2, 3, 4), MovAtom::ERROR_OKAY);
    QCOMPARE(track.SetWritingTool("writer", 3), MovAtom::ERROR_OKAY);
    QCOMPARE(track.SetStereoMode(1), MovAtom::ERROR_OKAY);

    const QByteArray bytes = written(movie);
    QVERIFY(bytes.contains("<GSpherical:InitialViewHeadingDegrees>90<"));
    MovieAtom again;
    QCOMPARE(again.Read(*ExactBuffer(bytes)), MovAtom::ERROR_OKAY);
    QCOMPARE(ask(again.tracks.front()), "stereo 1, projection 1, pose 90/-45/10, tool 'writer'");

    TrackAtom cube = again.tracks.front(); // the older form knows no cube map
    QCOMPARE(cube.SetCubemap(0, 4), MovAtom::ERROR_OKAY);
    QVERIFY(!cube.spherical);
    QVERIFY(ask(cube).contains("projection 256"));
    QCOMPARE(cube.SetEquirectangular(0, 0, 0, 0), MovAtom::ERROR_OKAY);
    QVERIFY(ask(cube).contains("projection 1,"));

    // Without descriptions the document answers, but for the pose, which it does not bring back.
    again.tracks.front().SampleDescriptions()->entries.clear();
    QCOMPARE(ask(again.tracks.front()), "stereo 1, projection 1, pose 0/0/0, tool 'writer'");
    QCOMPARE(again.tracks.front().spherical->SourceCount, 3U);
}

void tst_Spherical::aPoseIsKeptWithinItsLimits_data()
{
    const auto row = columns<float, float, float, QString>("yaw", "pitch", "roll", "expected");
    row("too large", 181.0f, 91.0f, 1e30f, "11796480/5898240/11796480");
    row("too small", -181.0f, -91.0f, -1e30f, "-11796480/-5898240/-11796480");
    row("fractions are kept in the file", 0.5f, -0.5f, 0.0f, "32768/-32768/0");
    row("no number", float(qQNaN()), 1.0f, 1.0f, "0/65536/65536");
}

void tst_Spherical::aPoseIsKeptWithinItsLimits()
{
    QFETCH(float, yaw);
    QFETCH(float, pitch);
    QFETCH(float, roll);
    sphericalProjectionHeaderAtom atom;
    atom.SetPose(yaw, pitch, roll);
    QTEST(QStringLiteral("%1/%2/%3")
              .arg(atom.pose_yaw_degrees)
              .arg(atom.pose_pitch_degrees)
              .arg(atom.pose_roll_degrees),
          "expected");
    sphericalVideoLegacyAtom legacy;
    legacy.SetPose(yaw, pitch, roll); // must not overflow
}

void tst_Spherical::settersNeedAPlace()
{
    MovieAtom movie;
    QVERIFY(read(::movie({TestTrack{"soun"}, undescribed("x")}), &movie));
    TrackAtom &sound = movie.tracks[0];
    QCOMPARE(sound.SetStereoMode(1), MovAtom::ERROR_INVALID_RET_VAL);
    QCOMPARE(sound.SetCubemap(0, 0), MovAtom::ERROR_INVALID_RET_VAL);
    QCOMPARE(sound.SetWritingTool("", 0), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(movie.tracks[1].SetStereoMode(1), MovAtom::ERROR_OKAY);
    QVERIFY(movie.tracks[1].SampleDescriptions()->Video());
}

QTEST_APPLESS_MAIN(tst_Spherical)
#include "tst_spherical.moc"
