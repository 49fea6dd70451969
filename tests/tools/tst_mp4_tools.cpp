// SPDX-License-Identifier: GPL-3.0-or-later
// The programs tavro-mp4info and tavro-mp4tag as their users start them, on clips made by ffmpeg.
#include "movparser/src/mov_file_reader.h"
#include "tests/movparser/columns.h"
#include "tests/movparser/movie.h"
#include "tools/CopyCheck.h"
#include "tools/OutputFile.h"
#include "tools/RawAtom.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using namespace Tavro::MovParserLib;

namespace {

// Of the older form of the tags.
const QByteArray kIdentifier = QByteArray::fromHex("ffcc8263f8554a938814587a02521fdd");

struct Run
{
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

Run run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool ended =
        process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

Run tag(const QStringList &arguments)
{
    return run(TAVRO_MP4TAG, arguments);
}

Run show(const QStringList &arguments)
{
    return run(TAVRO_MP4INFO, arguments);
}

QJsonObject object(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object();
}

QJsonObject info(const QString &path)
{
    return object(show({"--json", path}).output);
}

/// One line for each packet of a film: stream, times, size and a hash of its bytes.
QByteArray packets(const QString &path)
{
    return run("ffprobe",
               {"-v", "error", "-show_entries",
                "packet=stream_index,pts,dts,duration,size,flags,data_hash", "-show_data_hash",
                "md5", "-of", "csv", path})
        .output;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

class tst_Mp4Tools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void tagsEveryFormOfFile_data();
    void tagsEveryFormOfFile();
    void tagsWhatIsAskedAndNoMore_data();
    void tagsWhatIsAskedAndNoMore();
    void offsetsThatOutgrow32BitsFollow();
    void everythingThatPointsAtThingsThatMoveFollows();
    void aCopyThatIsNotWhatWasMeantIsSeen_data();
    void aCopyThatIsNotWhatWasMeantIsSeen();
    void atomsWithinAtomsEnd();
    void whatIsNotAskedForStays();
    void refusals_data();
    void refusals();
    void aFullDiskLeavesNothing();
    void anInterruptedCopyLeavesNothing();
    void infoSaysWhatFailed();
    void infoFailsAtOnce();
    void infoSaysWhatIsUsedAndSteersNoTerminal();

private:
    QString in(const char *name) const { return m_clips.filePath(QString::fromLatin1(name)); }

    QString out() const { return m_out->filePath("out.mp4"); }

    /// A film of these bytes with tags; empty and with a warning when it is refused.
    QByteArray tagFilm(const QByteArray &film, const QStringList &options)
    {
        const Run tagged = tag(QStringList{FileOf(film), out()} + options);
        m_complaints = tagged.errors;
        if (tagged.exitCode != 0)
            qWarning("%s", tagged.errors.constData());
        return tagged.exitCode == 0 ? readFile(out()) : QByteArray();
    }

    QStringList leftBehind() const
    {
        return QDir(m_out->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_clips;
    std::unique_ptr<QTemporaryDir> m_out;
    QByteArray m_complaints; ///< Of tagFilm().
};

void tst_Mp4Tools::initTestCase()
{
    const QList<QPair<const char *, QString>> clips = {
        {"last.mp4", QString()},
        {"first.mp4", "-movflags +faststart"},
        {"fragments.mp4", "-movflags +frag_keyframe+empty_moov -g 5"},
        {"clip.mov", "-movflags +faststart"},
    };
    for (const auto &[name, options] : clips) {
        const QString arguments =
            "-v error -f lavfi -i testsrc=size=128x64:rate=25:duration=1 -f lavfi -i "
            "sine=duration=1 -c:v libx264 -pix_fmt yuv420p -c:a aac "
            + options;
        const Run made = run("ffmpeg", arguments.split(' ', Qt::SkipEmptyParts) << in(name));
        QVERIFY2(made.exitCode == 0, made.errors.constData());
    }
    // The same fragments with places that count from the beginning of the file, and a recording
    // that ends within one.
    QByteArray bytes = readFile(in("fragments.mp4"));
    for (int at = 0; (at = bytes.indexOf("tfhd", at + 1)) > 0;) {
        const int run = bytes.indexOf("trun", at) + 12;
        const uint64_t base = readBigEndian(reinterpret_cast<uint8_t *>(bytes.data()) + at + 12, 8);
        const uint64_t place = readBigEndian(reinterpret_cast<uint8_t *>(bytes.data()) + run, 4);
        bytes.replace(at + 12, 8, Box::encode(0, 8)).replace(run, 4, Box::encode(base + place, 4));
    }
    QVERIFY(writeFile(in("absolute.mp4"), bytes)
            && writeFile(in("cut.mp4"), bytes.left(bytes.lastIndexOf("moof") + 60)));
}

void tst_Mp4Tools::init()
{
    m_out = std::make_unique<QTemporaryDir>();
}

void tst_Mp4Tools::tagsEveryFormOfFile_data()
{
    QTest::addColumn<QString>("clip");
    for (const char *name :
         {"last.mp4", "first.mp4", "fragments.mp4", "absolute.mp4", "cut.mp4", "clip.mov"})
        QTest::newRow(name) << in(name);
}

void tst_Mp4Tools::tagsEveryFormOfFile()
{
    QFETCH(QString, clip);
    const QByteArray before = readFile(clip);
    const Run tagged = tag({clip, out(), "--projection=equirectangular", "--stereo=top-bottom",
                            "--yaw=90.9", "--pitch", "-10", "--roll=5", "--tool=Tagger"});
    QVERIFY2(tagged.exitCode == 0, tagged.errors.constData());
    QVERIFY(readFile(clip) == before);
    QCOMPARE(leftBehind(), QStringList{"out.mp4"});

    QJsonObject expected = info(clip);
    expected["file"] = out();
    expected["projection"] = 1;
    expected["stereo_mode"] = 2;
    expected["pose"] = QJsonArray{90, -10, 5};
    expected["writing_tool"] = "Tagger";
    QCOMPARE(info(out()), expected);

    const QByteArray whole = packets(clip);
    QVERIFY(whole.count('\n') > 25);
    QCOMPARE(packets(out()), whole);
    const QByteArray seen = run("ffprobe", {"-v", "error", "-show_streams", out()}).output;
    for (const char *tag : {"type=top and bottom", "projection=equirectangular", "pitch=-10"})
        QVERIFY2(seen.contains(tag), seen.constData());

    // Tagging the copy again replaces the tags.
    const QString again = m_out->filePath("again.mp4");
    QCOMPARE(tag({out(), again, "--stereo", "mono"}).exitCode, 0);
    expected["file"] = again;
    expected["stereo_mode"] = 0;
    QCOMPARE(info(again), expected);
    QCOMPARE(packets(again), whole);
}

void tst_Mp4Tools::tagsWhatIsAskedAndNoMore_data()
{
    // The document is the older form, which knows no cube map.
    const auto row =
        columns<int, int, QJsonArray, bool>("projection", "stereoMode", "pose", "hasDocument");
    row("", 0, 0, {0, 0, 0}, false);
    row("--stereo left-right", 0, 1, {0, 0, 0}, false);
    row("--projection cubemap --yaw -179", 256, 0, {-179, 0, 0}, false);
    row("--projection equirectangular", 1, 0, {0, 0, 0}, true);
    row("--projection equirectangular --stereo top-bottom", 1, 2, {0, 0, 0}, true);
    row("--pitch 45 --tool x", 0, 0, {0, 45, 0}, true);
}

void tst_Mp4Tools::tagsWhatIsAskedAndNoMore()
{
    const QString options = QTest::currentDataTag();
    const QByteArray film = readFile(in("first.mp4"));
    const QByteArray copy = tagFilm(film, options.split(' ', Qt::SkipEmptyParts));
    const QJsonObject seen = info(out());
    QTEST(seen["projection"].toInt(), "projection");
    QTEST(seen["stereo_mode"].toInt(), "stereoMode");
    QTEST(seen["pose"].toArray(), "pose");
    QTEST(copy.contains("rdf:SphericalVideo"), "hasDocument");
    QCOMPARE(copy.contains("StereoMode>top-bottom<"), options.contains("top-bottom"));
    QCOMPARE(copy == film, options.isEmpty());
}

void tst_Mp4Tools::offsetsThatOutgrow32BitsFollow()
{
    // One sample just below 4 GiB, behind the movie: its offset fits 32 bits until the movie grows.
    constexpr uint32_t kPosition = 0xFFFFFF80;
    TestTrack track;
    track.samples = 1;
    track.tables = {Box::full("stts").words({1, 1, 1}), Box::full("stsc").words({1, 1, 1, 1}),
                    Box::full("stco").words({1, kPosition}), Box::full("stsz").words({100, 1})};
    const QByteArray head = Box("ftyp").raw("isom").u32(0).bytes() + movie({track}).bytes();
    const QByteArray media = QByteArray(100, 'm');
    QFile file(m_out->filePath("in.mp4"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(head + Box("mdat").claimsWide(uint64_t{5} << 30).bytes());
    QVERIFY(file.seek(kPosition) && file.write(media) == media.size());
    QVERIFY(file.resize(head.size() + (qint64{5} << 30)));
    file.close();

    const Run tagged = tag({file.fileName(), out(), "--projection", "equirectangular"});
    QVERIFY2(tagged.exitCode == 0, tagged.errors.constData());
    MovFileReader reader;
    SampleBuffer sample;
    SampleInfo place;
    QCOMPARE(reader.Open(out()), 0U);
    QCOMPARE(reader.GetSampleInfo(0, &place), 0U);
    QVERIFY(place.position > UINT32_MAX);
    QCOMPARE(reader.ReadSample(0, &sample), 0U);
    QVERIFY(std::memcmp(sample.GetData(), media.constData(), size_t(media.size())) == 0);
    QCOMPARE(QFileInfo(out()).size() - file.size(), qint64(place.position - kPosition));
}

// Once behind a movie that grows and once behind one that loses a long document.
void tst_Mp4Tools::everythingThatPointsAtThingsThatMoveFollows()
{
    const Box document = Box("uuid").raw(kIdentifier).zeros(2000);
    for (const QList<Box> &children : {QList<Box>(), QList<Box>{document}}) {
        TestTrack track;
        track.children = children;
        track.tables += {Box::full("saio", 0, 1).raw("cenc").words({0, 2, 9000, 0xABCDABCD}),
                         Box("senc").raw("auxiliary")};
        TestTrack other{"vide", "Reference", 2};
        other.information = {Box("dinf").child(
            Box::full("dref").u32(1).child(Box::full("url ").raw("file:///other.mp4")))};
        other.tables.last() = Box::full("co64").u32(1).u64(4096);
        QByteArray film = Box("ftyp").raw("isom").u32(0).bytes();
        for (const Box &box :
             {Box::full("sidx").words({1, 25, 0, 9000, 0}), movie({track, other}),
              Box("moof").child(Box("traf")
                                    .child(Box::full("tfhd", 0, 1).u32(1).u64(0))
                                    .child(Box::full("trun", 0, 0x201).words({1, 9000, 4}))
                                    .child(Box::full("saio").words({1, 9500}))),
              Box("mdat").zeros(9000),
              Box("mfra").child(Box::full("tfra").words({1, 0, 1, 0, 9000}).zeros(3))})
            film.append(box.bytes());
        const auto auxiliary = [](const QByteArray &bytes) {
            return uint64_t(bytes.indexOf("auxiliary"));
        };
        film.replace(Box::encode(0xABCDABCD, 4), Box::encode(auxiliary(film), 4));
        const QByteArray copy = tagFilm(film, {"--projection=cubemap"});
        QVERIFY2(m_complaints.contains("media in other files"), m_complaints.constData());
        const uint64_t grown = uint64_t(copy.size() - film.size());
        // What the field behind the fourcc must hold, its place and how many bytes it has.
        const auto holds = [&copy](const QByteArray &type, int place, int width, uint64_t value,
                                   int from = 0) {
            const int at = copy.indexOf(type, from) + 4 + place;
            return copy.mid(at, width) == Box::encode(value, width);
        };
        QVERIFY(grown != 0 && holds("saio", 16, 4, 9000 + grown));
        QVERIFY(holds("saio", 20, 4, auxiliary(copy)));
        QVERIFY(holds("sidx", 16, 4, 9000 + grown) && holds("tfra", 20, 4, 9000 + grown));
        QVERIFY(holds("stco", 8, 4, 4096 + grown) && holds("co64", 8, 8, 4096));
        const uint64_t base = int64_t(grown) > 0 ? grown : 0; // there is no base below 0
        QVERIFY(holds("tfhd", 8, 8, base) && holds("trun", 8, 4, 9000 + grown - base));
        QVERIFY(holds("saio", 8, 4, 9500 + grown - base, copy.indexOf("moof")));
    }
}

void tst_Mp4Tools::aCopyThatIsNotWhatWasMeantIsSeen_data()
{
    const auto row = columns<QString, QByteArray, int, QString>("clip", "type", "place", "fault");
    const QString places = "it does not lead to the samples of the film";
    row("another projection", "first.mp4", "equi", -1, "it does not say what was asked for");
    row("another layout", "first.mp4", "st3d", 4, "it does not say what was asked for");
    row("another layout in the document", "first.mp4", "left-right", 0,
        "it does not say what was asked for");
    row("another chunk", "first.mp4", "stco", 15, places);
    row("another size", "first.mp4", "stsz", 15, places);
    row("another byte in the first sample", "first.mp4", "mdat", 0, places);
    row("another atom behind the movie", "first.mp4", "mdat", -1, places);
    row("another run", "fragments.mp4", "trun", 11, places);
    row("another byte in the first run", "fragments.mp4", "mdat", 0, places);
    row("another entry in the index", "fragments.mp4", "tfra", 31, places);
    row("a movie that cannot be read", "first.mp4", "moov", -1, "it cannot be read back");
}

void tst_Mp4Tools::aCopyThatIsNotWhatWasMeantIsSeen()
{
    QFETCH(QString, clip);
    QFETCH(QByteArray, type);
    QFETCH(int, place);
    MovieTags tags;
    tags.projection = kProjectionEquirectangular;
    tags.stereoMode = 1;
    const QByteArray film = readFile(m_clips.filePath(clip));
    QByteArray copy = tagFilm(film, {"--projection=equirectangular", "--stereo=left-right"});
    FileOf original(film);
    QVERIFY(original.open());
    const auto fault = [&] {
        FileOf changed(copy);
        return changed.open() ? faultOfCopy(original.handle(), changed.handle(), tags) : "closed";
    };
    QCOMPARE(fault(), QString());
    const int at = copy.indexOf(type) + (place < 0 ? 3 : type.size() + place);
    copy[at] = char(copy[at] ^ 1);
    QTEST(fault(), "fault");
}

void tst_Mp4Tools::atomsWithinAtomsEnd()
{
    constexpr uint64_t kDepth = 200000;
    for (const char *type : {"trak", "udta", "meta"}) {
        QByteArray nested;
        for (uint64_t i = 0; i < kDepth; ++i)
            nested.append(Box::encode(8 * (kDepth - i), 4)).append(type);
        TestTrack track;
        track.children = {Box(type).raw(nested)};
        QVERIFY(tagFilm(movieFile(movie({track})), {"--tool=x"}).contains(nested));
    }
}

void tst_Mp4Tools::whatIsNotAskedForStays()
{
    const QByteArray text =
        " <GSpherical:SourceCount>6</GSpherical:SourceCount>"
        "<GSpherical:CroppedAreaTopPixels>8</GSpherical:CroppedAreaTopPixels>";
    const Box mesh = Box("sv3d").child(
        Box("proj").child(Box::full("prhd").zeros(12)).child(Box::full("mshp").raw("mesh")));
    const Box stereo = Box::full("st3d").u8(1); // top-bottom
    const Box settings = Box("SETT").u32(1); // which rewriting would reverse
    const Box foreign = Box("uuid").raw(QByteArray(16, 'f')).raw("foreign");
    TestTrack track;
    track.children = {foreign, Box("abcd").raw("kept"), Box("uuid").raw(kIdentifier).raw(text)};
    track.descriptionChildren = {Box("efgh").raw("kept too"), mesh, stereo};
    const QByteArray film = movieFile(movie({track}, {Box("udta").child(settings)}));
    QVERIFY(tagFilm(film, {}) == film);
    QVERIFY2(m_complaints.isEmpty(), m_complaints.constData());

    const QByteArray left = tagFilm(film, {"--stereo=left-right"});
    QVERIFY2(m_complaints.contains("CroppedAreaTopPixels"), m_complaints.constData());
    QVERIFY2(!m_complaints.contains("mshp"), m_complaints.constData());
    QVERIFY(left.contains(mesh.bytes()) && !left.contains(stereo.bytes()));

    const QByteArray tool = tagFilm(film, {"--tool=x"});
    QVERIFY2(m_complaints.contains("mshp"), m_complaints.constData());
    QVERIFY(tool.contains(stereo.bytes()) && tool.contains("<GSpherical:SourceCount>6<"));
    for (const Box &atom : {settings, foreign, track.children[1], track.descriptionChildren[0]})
        QCOMPARE(tool.count(atom.bytes()), 1);

    track.children.clear();
    QVERIFY(tagFilm(movieFile(movie({track})), {"--yaw=5"}).contains("StereoMode>top-bottom<"));
}

void tst_Mp4Tools::refusals_data()
{
    const auto row = columns<QStringList, QByteArray>("arguments", "says");
    const QString clip = in("last.mp4");
    const QString link = in("link.mp4");
    const QString hardLink = in("hard_link.mp4");
    const QString text = in("text.mp4");
    const QString sound = in("sound.mp4");
    const QString pipe = in("pipe");
    const QString items = in("items.mp4");
    const QString overlap = in("overlap.mp4");
    const QString lead = in("lead.mp4");
    const QString hidden = in("hidden.mp4");
    const QString beside = in("beside.mp4");
    const QString within = in("within.mp4");
    const Box places = Box::full("iloc").shorts({0x4400, 1, 1, 0, 1}).words({9000, 10});
    const Box list = Box::full("meta").child(Box::full("hdlr")).child(places);
    const QByteArray space = Box("free").bytes().repeated(1000000);
    TestTrack overlapping;
    overlapping.tables.last() = Box::full("stco").words({1, 8});
    TestTrack leading;
    leading.children = {Box("uuid").raw(kIdentifier).raw("gone")};
    QByteArray gone = movieFile(movie({leading}));
    gone.replace(Box::encode(4096, 4), Box::encode(uint64_t(gone.indexOf("gone")), 4));
    QVERIFY(QFile::exists(pipe) || ::mkfifo(qPrintable(pipe), 0600) == 0);
    QVERIFY(QFile::link(clip, link) && ::link(qPrintable(clip), qPrintable(hardLink)) == 0);
    const QByteArray fragment = Box("moof").child(Box("traf").claims(100));
    QVERIFY(writeFile(text, "not a film at all") && writeFile(hidden, movieFile(movie()) + fragment)
            && writeFile(sound, movieFile(movie({TestTrack{"soun"}})))
            && writeFile(overlap, movieFile(movie({overlapping}))) && writeFile(lead, gone)
            && writeFile(items, movieFile(movie({TestTrack()}, {list})))
            && writeFile(beside, movieFile(movie()) + space)
            && writeFile(within, movieFile(movie().raw(space))));
    const QString target = "OUT";
    row("one file", {clip}, "Usage");
    row("an unknown option", {clip, target, "--sideways"}, "Usage");
    row("an unknown projection", {clip, target, "--projection=flat"},
        "--projection cannot be 'flat'");
    row("an angle that is none", {clip, target, "--yaw=ninety"}, "--yaw cannot be 'ninety'");
    row("a pitch behind the pole", {clip, target, "--pitch=-90.5"}, "--pitch cannot be '-90.5'");
    row("a yaw behind half a turn", {clip, target, "--yaw=181"}, "--yaw cannot be '181'");
    row("an empty tool", {clip, target, "--tool="}, "--tool cannot be ''");
    row("a missing file", {in("none.mp4"), target}, "No such file");
    row("a folder", {m_clips.path(), target}, "is not a file");
    row("a pipe", {pipe, target}, "is not a file");
    row("a pipe to write to", {clip, pipe}, "is not a file");
    row("a device to write to", {clip, "/dev/null"}, "is not a file");
    row("items behind the movie", {items, target, "--tool=x"},
        "has items whose places in the file cannot be moved");
    row("samples in what is replaced", {lead, target, "--tool=x"},
        "has samples within its metadata that cannot be moved");
    row("samples that run into the movie", {overlap, target, "--tool=x"},
        "out.mp4: was not kept, because it does not lead to the samples of the film");
    row("a fragment whose atom is larger", {hidden, target, "--tool=x"},
        "has a fragment that cannot be moved");
    row("a million atoms beside the movie", {beside, target}, "has too many atoms");
    row("a million atoms in the movie", {within, target}, "has too many atoms");
    row("no film", {text, target}, "has no movie atom");
    row("no video", {sound, target}, "has no video track");
    row("the same file", {clip, clip}, "is the file to be copied");
    row("a link to the same file", {clip, link}, "is the file to be copied");
    row("another name of the same file", {clip, hardLink}, "is the file to be copied");
    row("a folder that is not there", {clip, "/nowhere/out.mp4"}, "/nowhere");
}

void tst_Mp4Tools::refusals()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, says);
    const QByteArray before = readFile(in("last.mp4"));
    arguments.replaceInStrings("OUT", out());
    const Run refused = tag(arguments);
    QCOMPARE(refused.exitCode, 1);
    QVERIFY2(refused.errors.contains(says), refused.errors.constData());
    QCOMPARE(leftBehind(), QStringList());
    QVERIFY(readFile(in("last.mp4")) == before);
}

void tst_Mp4Tools::aFullDiskLeavesNothing()
{
    QVERIFY(writeFile(out(), "what stood here"));
    const QString command = "ulimit -f 1; exec \"$0\" \"$@\"";
    const Run failed =
        run("bash", {"-c", command, TAVRO_MP4TAG, in("first.mp4"), out(), "--stereo=mono"});
    QCOMPARE(failed.exitCode, 1);
    QVERIFY2(failed.errors.contains("out.mp4: cannot write: File too large"),
             failed.errors.constData());
    QCOMPARE(leftBehind(), QStringList{"out.mp4"});
    QCOMPARE(QFileInfo(out()).size(), qint64(15));
}

void tst_Mp4Tools::anInterruptedCopyLeavesNothing()
{
    std::atomic<bool> interrupted{false};
    {
        OutputFile file(out(), interrupted);
        QVERIFY(file.open());
        QVERIFY(file.append({1, 2, 3}));
        interrupted = true;
        QFile source(in("last.mp4"));
        QVERIFY(source.open(QIODevice::ReadOnly));
        QVERIFY(!file.appendFrom(source.handle(), 0, 1000));
        QVERIFY(!file.commit());
        QCOMPARE(file.errorString(), QString("interrupted"));
    }
    QCOMPARE(leftBehind(), QStringList());
}

void tst_Mp4Tools::infoSaysWhatFailed()
{
    const QString text = m_out->filePath("a b \u00e4.mp4");
    const FileOf sound(movieFile(movie({TestTrack{"soun"}})));
    QVERIFY(writeFile(text, "not a film at all"));
    const Run all = show({"--json", text, sound, in("last.mp4")});
    QCOMPARE(all.exitCode, 1);
    const QList<QByteArray> lines = all.output.split('\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(object(lines.at(0)), (QJsonObject{{"file", text}, {"open", 2}}));
    const QJsonObject silent = object(lines.at(1));
    QCOMPARE(silent["open"].toInt(-1), 0);
    QCOMPARE(silent["has_video"].toBool(true), false);
    QCOMPARE(silent["frame_size"].toObject()["error"].toInt(), 0x40002);
    QCOMPARE(silent["projection"].toObject()["error"].toInt(), 0x4000A);
    const QJsonObject film = object(lines.at(2));
    QCOMPARE(film["frame_size"].toArray(), (QJsonArray{128, 64}));
    QCOMPARE(film["frame_rate"].toDouble(), 25.0);
    QCOMPARE(film["tracks"].toInt(), 2);

    QCOMPARE(show({in("last.mp4")}).exitCode, 0);
    QCOMPARE(show({}).exitCode, 1);
    QVERIFY(show({text}).output.contains("MovParser::Error  >>  ERROR_MISSING_MOVIE_HEADER"));
}

void tst_Mp4Tools::infoFailsAtOnce()
{
    const QString pipe = in("info_pipe");
    QVERIFY(::mkfifo(qPrintable(pipe), 0600) == 0);
    QFile hole(in("hole.mp4")); // in a movie of 8 GiB
    QVERIFY(hole.open(QIODevice::WriteOnly));
    hole.write(Box("moov").claimsWide(uint64_t{8} << 30).bytes());
    QVERIFY(hole.resize(qint64{8} << 30));
    hole.close();
    // Far less than the movie claims, in kilobytes; a sanitizer needs more address space than this.
#ifdef __SANITIZE_ADDRESS__
    const QString limit = "unlimited";
#else
    const QString limit = "1000000";
#endif
    const std::pair<QString, int> errors[] = {{pipe, 0x10002},
                                              {"/dev/zero", 0x10002},
                                              {m_clips.path(), 0x10002},
                                              {hole.fileName(), 0x10007}};
    for (const auto &[path, error] : errors) {
        QElapsedTimer timer;
        timer.start();
        const Run failed = run(
            "bash",
            {"-c", "ulimit -v " + limit + "; exec \"$0\" \"$@\"", TAVRO_MP4INFO, "--json", path});
        QCOMPARE(failed.exitCode, 1);
        QCOMPARE(object(failed.output)["open"].toInt(), error);
        QVERIFY(timer.elapsed() < 2000);
    }
}

void tst_Mp4Tools::infoSaysWhatIsUsedAndSteersNoTerminal()
{
    const QByteArray text =
        "x<GSpherical:StereoMode>left-right</GSpherical:StereoMode>"
        "<GSpherical:StitchingSoftware>\x1b[2J</GSpherical:StitchingSoftware>";
    const Box both = Box("proj").child(Box::full("equi").zeros(16)).child(Box::full("cbmp").u64(0));
    const Box userData = Box("udta").child(Box("CAME").u8(1)).child(Box("FIRM").raw("1.0"));
    TestTrack track;
    track.name = "Tavro \x1b]0;title\x07 \xc2\x9b \xc3\xa4";
    track.children = {Box("uuid").raw(kIdentifier).raw(text)};
    track.descriptionChildren = {Box("sv3d").child(both)};
    const QByteArray seen = show({"--tree", FileOf(movieFile(movie({track}, {userData})))}).output;
    for (const char *line :
         {"spherical document (V1, left-right, stitched by '\\x1b[2J')", "yes  (named as handler)",
          "cbmp in description 1 of track 1", "CAME in the user data",
          "equirectangular  (sv3d of the first description)",
          "mono  (st3d missing in the first description)", "|\t***** MovieHeaderAtom Begin\n",
          "ComponentName: Tavro \\x1b]0;title\\x07 \\xc2\\x9b \xc3\xa4\n"})
        QVERIFY2(seen.contains(line), seen.constData());
    QVERIFY(!seen.contains('\x1b'));

    track.children = {Box("uuid").zeros(16).raw(text)}; // somebody else's
    QVERIFY(!show({FileOf(movieFile(movie({track})))}).output.contains("spherical document"));
}

QTEST_GUILESS_MAIN(tst_Mp4Tools)
#include "tst_mp4_tools.moc"
