// SPDX-License-Identifier: GPL-3.0-or-later
// Whole files through the reader: what opens, what is answered, and what is printed.
#include "answer.h"
#include "columns.h"
#include "movie.h"
#include "stream_capture.h"

using namespace Tavro::MovParserLib;

class tst_MovFileReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensOrSaysWhyNot_data();
    void opensOrSaysWhyNot();
    void skipsMediaDataPast4GiB();
    void theFrameRateFollowsItsRule_data();
    void theFrameRateFollowsItsRule();
    void theMakerIsTold_data();
    void theMakerIsTold();
    void questionsWithoutAnAnswer();
    void anotherFileReplacesTheFirst();
    void aMovieThatWouldGrowIsNotRewritten();
    void aTrackThatWasAddedIsReadBack();
};

namespace {

QByteArray handlerName(const QByteArray &bytes)
{
    return Box::full("hdlr").u32(0).raw("mdir").zeros(12).raw(bytes).bytes();
}

Box toolList(const Box &tool, const QByteArray &handler = handlerName("any name"))
{
    return Box::full("meta").raw(handler).child(
        Box("ilst").child(Box("trkn").zeros(3)).child(tool));
}

Box tool(const QByteArray &text, uint32_t kind = 1)
{
    return Box("\xA9too").child(Box("data").u32(kind).u32(0).raw(text));
}

} // namespace

void tst_MovFileReader::opensOrSaysWhyNot_data()
{
    const auto row = columns<QByteArray, quint32, QByteArray>("bytes", "result", "printed");
    const char *missing = "MovParser::Error  >>  ERROR_MISSING_MOVIE_HEADER\n";
    const char *malformed = "MovAtom::Error  >>  ERROR_ATOM_READ_FAILED\n";
    const QByteArray ftyp = Box("ftyp").zeros(8).bytes();
    const auto join = [](const QByteArrayList &parts) { return parts.join(); };
    const QByteArray moov = movie().bytes();

    row("ftyp, moov, mdat", movieFile(movie()), 0, "");
    row("moov behind a 64-bit mdat", join({Box("mdat").zeros(700).wide(), moov}), 0, "");
    row("moov behind wide and free", join({Box("wide"), Box("free").zeros(9), moov}), 0, "");
    row("a first atom that no movie begins with", join({Box("skip"), moov}), 2,
        "MovParser::Error  >>  ERROR_FILE_NOT_COMPATIBLE\n");
    row("an atom of size 0 before moov", join({ftyp, Box("mdat").claims(0), moov}), 2, missing);
    row("a size that wraps before moov",
        join({ftyp, Box("mdat").zeros(16).claimsWide(0xFFFFFFFFFFFFFFF8), moov}), 2,
        "MovParser::Error  >>  \n");
    row("an empty file", "", 2, "MovParser::Error  >>  \n");
    row("no moov", join({ftyp, Box("mdat").zeros(5000)}), 2, missing);
    row("moov cut off", moov.left(moov.size() - 100), 0x1000B,
        "FileReader::Error  >>  ERROR_ATTEMPT_TO_READ_PAST_EOF\n");
    row("media cut off", movieFile(movie()).left(moov.size() + 300), 0, "");
    row("no trak", movie({}), 0x40004, malformed);
    row("trak without mdia", movie({}, {Box("trak").child(TestTrack().header())}), 0x40004,
        malformed);
    row("trak without tkhd", movie({}, {Box("trak").child(TestTrack().media())}), 0x40004,
        malformed);
    row("no mvhd", Box("moov").child(TestTrack().box()), 0, "");
    const Box reversed = Box("trak").child(TestTrack().media()).child(TestTrack().header());
    row("mdia before tkhd", movie({}, {reversed}), 0, "");
    TestTrack noChunks;
    noChunks.tables.removeLast();
    row("stbl without chunk offsets", movie({noChunks}), 0x40004, malformed);
    row("a handler without samples here", movie({TestTrack{"subt"}}), 0, "");
    const QByteArray space = Box("free").bytes();
    row("moov behind many atoms", space.repeated(30000) + moov, 0, "");
    row("moov behind more atoms than are searched", space.repeated(100000) + moov, 2, missing);
}

void tst_MovFileReader::opensOrSaysWhyNot()
{
    QFETCH(QByteArray, bytes);
    QFETCH(quint32, result);
    MovFileReader reader;
    StreamCapture capture;
    QCOMPARE(reader.Open(FileOf(bytes)), result);
    QTEST(capture.text(), "printed");
    QCOMPARE(reader.GetMoviePosition(), uint64_t(result == 0 ? bytes.indexOf("moov") - 4 : 0));
}

void tst_MovFileReader::skipsMediaDataPast4GiB()
{
    const qint64 gap = 5LL << 30;
    FileOf file(Box("mdat").zeros(8).claimsWide(uint64_t(gap)));
    QVERIFY(file.open() && file.resize(gap) && file.seek(gap));
    QVERIFY(file.write(movie().bytes()) > 0 && file.flush());
    MovFileReader reader;
    QCOMPARE(reader.Open(file), 0u);
    QCOMPARE(reader.GetMoviePosition(), uint64_t(gap));
    uint64_t position = 1;
    uint64_t size = 0;
    QCOMPARE(reader.LocateMediaData(&position, &size), 0u);
    QCOMPARE(position, uint64_t(0));
    QCOMPARE(size, uint64_t(gap));
}

void tst_MovFileReader::theFrameRateFollowsItsRule_data()
{
    // The edit is the media time of the first one, -2 for no edits; the rate is 0 for none.
    const auto row =
        columns<uint, uint, uint, int, double>("timeScale", "duration", "samples", "edit", "rate");
    row("25 frames", 25, 250, 250, -2, 25);
    row("rounded up to whole units", 600, 601, 30, -2, 28.571);
    row("a frame too long for thousandths", 90000, 4294968, 1, -2, 0.021);
    row("a large time scale", 4294967295, 171798692, 1, -2, 25);
    row("no samples, an edit", 24000, 5, 0, 1000, 24);
    row("no samples, an empty edit", 24000, 5, 0, -1, 0);
    row("no samples, no edit", 24000, 5, 0, -2, 0);
    row("an edit does not matter beside samples", 25, 25, 25, 1000, 25);
    row("no time scale", 0, 25, 25, -2, 0);
    row("no duration", 25, 0, 25, -2, 0);
}

void tst_MovFileReader::theFrameRateFollowsItsRule()
{
    QFETCH(uint, timeScale);
    QFETCH(uint, duration);
    QFETCH(uint, samples);
    QFETCH(int, edit);
    QFETCH(double, rate);
    TestTrack track{"vide", "Video", 1, timeScale, duration, samples};
    if (edit != -2)
        track.children = {
            Box("edts").child(Box::full("elst").words({2, 9, uint32_t(edit), 0x10000}).zeros(12))};
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(movieFile(movie({track})))), 0u);
    QCOMPARE(answer(reader, &MovFileReader::GetFrameRate),
             rate == 0 ? "0x10000" : QString::number(rate));
    QCOMPARE(reader.HasVideo(), samples != 0);
}

void tst_MovFileReader::theMakerIsTold_data()
{
    const auto row = columns<QByteArray, QByteArray, bool>("name", "userData", "maker");
    const Box none("free");
    row("by the name of track 0", "A Tavro Camera", none, true);
    row("another name", "tavro", none, false);
    row("by its firmware", "Video", Box("FIRM").raw("1.0"), true);
    row("an empty firmware", "Video", Box("FIRM"), false);
    row("by the tool", "Video", toolList(tool("Tavro")), true);
    row("a longer tool", "Video", toolList(tool("Tavro 2")), false);
    row("a tool that is no text", "Video", toolList(tool("Tavro", 2)), false);
    row("a list of another handler", "Video",
        toolList(tool("Tavro"), handlerName("").replace("mdir", "mdta")), false);
    row("a tool of size 0", "Video", toolList(Box("\xA9too").claims(0)), false);
    row("a tool cut off", "Video", toolList(Box("\xA9too").u32(99)), false);
    row("a list without end", "Video",
        Box::full("meta").raw(handlerName("")).child(Box("ilst").claims(8)), false);
    row("a short meta", "Video", Box::full("meta").zeros(3), false);
}

void tst_MovFileReader::theMakerIsTold()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, userData);
    QFETCH(bool, maker);
    TestTrack track;
    track.name = name;
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(movie({track}, {Box("udta").raw(userData)}))), 0u);
    QCOMPARE(answer(reader, &MovFileReader::IsTavroFile), QString::number(maker));
    track.name.clear();
    QCOMPARE(reader.Open(FileOf(movieFile(movie({track})))), 0u);
    QCOMPARE(answer(reader, &MovFileReader::IsTavroFile), "0x4000a");
}

void tst_MovFileReader::questionsWithoutAnAnswer()
{
    MovFileReader reader;
    QCOMPARE(reader.Open(QString()), 0x10001u);
    QCOMPARE(reader.Open("/nowhere/none"), 0x10002u);
    QCOMPARE(reader.Open(FileOf(movieFile(movie({TestTrack{"soun"}})))), 0u);
    QVERIFY(!reader.HasVideo());
    uint32_t number = 0;
    float angle = 0;
    std::string text = "old";
    QCOMPARE(reader.GetFrameSize(&number, &number), 0x40002u);
    QCOMPARE(answer(reader, &MovFileReader::GetFrameRate), "0x40002");
    QCOMPARE(answer(reader, &MovFileReader::GetStereoMode), "0x40002");
    QCOMPARE(answer(reader, &MovFileReader::GetProjection), "0x4000a");
    QCOMPARE(reader.GetInitialPose(&angle, &angle, &angle), 0x4000Au);
    QCOMPARE(reader.GetWritingTool(&text), 0x40002u);
    QCOMPARE(text, std::string());
    for (const uint32_t error :
         {reader.GetFrameSize(nullptr, &number), reader.GetFrameSize(&number, nullptr),
          reader.GetFrameRate(nullptr), reader.IsTavroFile(nullptr), reader.GetProjection(nullptr),
          reader.GetInitialPose(&angle, nullptr, &angle), reader.GetStereoMode(nullptr),
          reader.GetWritingTool(nullptr), reader.GetEsds(nullptr), reader.GetChannelCount(nullptr),
          reader.GetTrackSeconds(nullptr), reader.GetCodec(nullptr), reader.GetUserData(nullptr)})
        QCOMPARE(error, 5u);
}

void tst_MovFileReader::anotherFileReplacesTheFirst()
{
    const QByteArray first = movieFile(movie({TestTrack()}, {Box("udta").child(Box("abcd"))}));
    const Box second = Box("moov").child(TestTrack().box()); // without a header
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(first)), 0u);
    QVERIFY(reader.Movie().user_data);
    QCOMPARE(reader.Open(FileOf(movieFile(second))), 0u);
    QVERIFY(!reader.Movie().user_data && reader.Movie().tracks.size() == 1);
    QCOMPARE(reader.Movie().header.duration, 0u);
    QVERIFY(reader.Open(QString()) != 0);
    QVERIFY(!reader.HasVideo());
    QCOMPARE(reader.GetMoviePosition(), uint64_t(0));
    uint64_t number = 0;
    QVERIFY(reader.LocateMediaData(&number, &number) != 0); // the file before is closed

    const Box broken = movie({TestTrack()}, {Box("trak").child(Box("free"))});
    QVERIFY(reader.Open(FileOf(movieFile(broken))) != 0);
    QVERIFY(reader.Movie().tracks.empty() && reader.Movie().header.duration == 0);

    MovieAtom atom; // reads anew without a reader too
    QCOMPARE(atom.Read(*ExactBuffer(movie())), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.Read(*ExactBuffer(second)), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.header.duration, 0u);
}

// Sound of order 26 has 2 to the power of 27 channels once it is written: they would fit memory.
void tst_MovFileReader::aMovieThatWouldGrowIsNotRewritten()
{
    TestTrack track;
    track.handler = "soun";
    track.tables.append(Box::full("stsd").u32(1).child(
        Box("twos").zeros(6).u16(1).zeros(20).child(Box("SA3D").u16(0).u32(26).u16(0).u32(0))));
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(movieFile(movie({track})))), 0u);
    StreamCapture capture;
    QCOMPARE(reader.PrintRewritten(), 0x40005u);
}

void tst_MovFileReader::aTrackThatWasAddedIsReadBack()
{
    MovieAtom movie;
    VideoTrackFormat format;
    format.codec = FourCC("avc1");
    format.width = 1920;
    format.timeScale = 50;
    QCOMPARE(movie.AddVideoTrack(format), MovAtom::ERROR_INVALID_ARG);
    format.height = 960;
    format.aspectNumerator = 4;
    format.aspectDenominator = 3;
    TrackAtom *track = nullptr;
    QCOMPARE(movie.AddVideoTrack(format, &track), MovAtom::ERROR_OKAY);
    QCOMPARE(track->header.width, 2560u << 16);
    MediaInformationAtom &media = *track->media.information;
    for (const uint32_t size : {10u, 10u, 12u})
        QCOMPARE(media.AddSample(size), MovAtom::ERROR_OKAY);
    QCOMPARE(media.AddSample(0), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(media.AddSampleTime(2, 1), MovAtom::ERROR_OKAY);
    QCOMPARE(media.AddSampleTime(1, 1), MovAtom::ERROR_OKAY);
    QCOMPARE(media.AddSyncSample(1), MovAtom::ERROR_OKAY);
    QCOMPARE(media.AddChunk(100, 2, 1), MovAtom::ERROR_OKAY);
    QCOMPARE(media.AddChunk(200, 1, 1), MovAtom::ERROR_OKAY);
    QCOMPARE(track->SetDuration(3, movie.header.timeScale, 0x10000), MovAtom::ERROR_OKAY);
    QCOMPARE(track->header.duration, 36u);
    SoundTrackFormat sound;
    sound.codec = FourCC("mp4a");
    sound.channels = 2;
    sound.sampleRate = 48000;
    sound.timeScale = 48000;
    QCOMPARE(movie.AddSoundTrack(sound), MovAtom::ERROR_OKAY);
    QCOMPARE(movie.header.nextTrackId, 3u);

    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(written(movie))), 0u);
    uint32_t width = 0;
    uint32_t height = 0;
    QCOMPARE(reader.GetFrameSize(&width, &height), 0u);
    QVERIFY(width == 1920 && height == 960);
    QCOMPARE(answer(reader, &MovFileReader::GetFrameRate), "50");
    SampleInfo info;
    QVERIFY(reader.GetSampleInfo(1, &info) == 0 && info.position == 110 && !info.isKey);
    QVERIFY(reader.GetSampleInfo(2, &info) == 0 && info.position == 200 && info.size == 12);
    QCOMPARE(reader.Movie().tracks[1].header.trackId, 2u);
}

QTEST_APPLESS_MAIN(tst_MovFileReader)
#include "tst_mov_file_reader.moc"
