// SPDX-License-Identifier: GPL-3.0-or-later
// What tracks and their samples are asked: through the reader, through the table of operations, and
// by look-ups in any order.
#include "movie.h"
#include "movparser/src/mov_file_reader.h"
#include "stream_capture.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>
#include <vector>

using namespace Tavro::MovParserLib;

class tst_Tracks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTimeThatWasToldLeadsBack();
    void runsCountNoMoreThanTheirFieldHolds();
    void tracksAreCountedByTheirKind();
    void timeIsToldInEveryUnit();
    void syncSamplesAreFoundInAnyOrder_data();
    void syncSamplesAreFoundInAnyOrder();
    void everyQuestionReachesItsTable_data();
    void everyQuestionReachesItsTable();
    void whatWasReadIsPrintedAsRewritten();
    void samplesAreFoundAndRead();
    void tablesOutliveTheirReader();
    void aWalkIsTheSameInEveryOrder();
    void aReplacedTableIsLookedUpAnew();

private:
    QString store(const QByteArray &bytes)
    {
        QFile file(m_folder.filePath(QStringLiteral("movie")));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("the folder cannot be written");
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

namespace {

// Five samples in chunks of two, two and one, of 1 to 5 bytes at 1024, 2048 and 3000; the second
// and fourth are shown later than decoded, and the first and fourth are key samples.
TestTrack fiveSamples()
{
    TestTrack track;
    track.timeScale = 1000;
    track.tables = {
        Box::full("stsz").u32(0).u32(5).u32(1).u32(2).u32(3).u32(4).u32(5),
        Box::full("stsc").u32(2).u32(1).u32(2).u32(1).u32(3).u32(1).u32(1),
        Box::full("stco").u32(3).u32(1024).u32(2048).u32(3000),
        Box::full("stts").u32(2).u32(3).u32(10).u32(2).u32(20),
        Box::full("ctts").u32(4).u32(1).u32(0).u32(1).u32(5).u32(1).u32(0xFFFFFFFF).u32(2).u32(7),
        Box::full("stss").u32(2).u32(1).u32(4),
        Box("free")};
    return track;
}

struct Expected
{
    uint64_t position, size, time, duration;
    bool key;
};

constexpr Expected kFive[] = {{1024, 1, 0, 10000, true},
                              {1025, 2, 15000, 10000, false},
                              {2048, 3, 19000, 10000, false},
                              {2051, 4, 37000, 20000, true},
                              {3000, 5, 57000, 20000, false}};

} // namespace

void tst_Tracks::samplesAreFoundAndRead()
{
    QByteArray bytes = movieFile(movie({fiveSamples()}));
    bytes.append(4000 - bytes.size(), '\0');
    bytes.replace(2051, 4, "four");
    MovFileReader reader;
    QCOMPARE(reader.Open(store(bytes)), 0u);
    for (const uint32_t index : {0u, 4u, 2u, 1u, 3u, 3u, 0u}) {
        SampleInfo info;
        QCOMPARE(reader.GetSampleInfo(index, &info), 0u);
        QCOMPARE(info.position, kFive[index].position);
        QCOMPARE(uint64_t(info.size), kFive[index].size);
        QCOMPARE(info.time, kFive[index].time);
        QCOMPARE(info.duration, kFive[index].duration);
        QCOMPARE(info.isKey, kFive[index].key);
    }
    SampleInfo info;
    QCOMPARE(reader.GetSampleInfo(5, &info), 0x40001u);
    uint32_t index = 0;
    for (const auto &[time, wanted] :
         {std::pair(0, 0u), {9999, 0u}, {10000, 1u}, {29000, 2u}, {69000, 4u}}) {
        QCOMPARE(reader.GetSampleIndexForTime(uint64_t(time), &index), 0u);
        QCOMPARE(index, wanted);
    }
    QCOMPARE(reader.GetSampleIndexForTime(70000, &index), 0x40002u);
    SampleBuffer sample;
    QCOMPARE(reader.ReadSample(3, &sample), 0u);
    ExactBuffer four("four");
    QVERIFY(sample == *four);
    QCOMPARE(sample.timestamp, uint64_t(37000));
    QVERIFY(sample.is_key);
    char memory[4] = {};
    uint64_t size = 0;
    QCOMPARE(reader.ReadSample(3, memory, 3, &size), 0x40001u);
    QCOMPARE(reader.ReadSample(3, memory, 4, &size), 0u);
    QCOMPARE(QByteArray(memory, int(size)), QByteArray("four"));
    uint32_t shortest = 0;
    uint32_t longest = 0;
    QCOMPARE(reader.GetDurationRange(&shortest, &longest), 0u);
    QCOMPARE(shortest, 10u);
    QCOMPARE(longest, 20u);

    TestTrack timeless = fiveSamples();
    timeless.tables.removeAt(3);
    QCOMPARE(reader.Open(store(movieFile(movie({timeless})))), 0u);
    QCOMPARE(reader.GetSampleIndexForTime(0, &index), 0x40003u);
}

// Times are told rounded down: what was told must lead back to the sample, and what is a
// microsecond less to the one before.
void tst_Tracks::aTimeThatWasToldLeadsBack()
{
    for (const uint32_t timeScale : {30000u, 90000u, 1000003u, 0u}) {
        TestTrack track;
        track.timeScale = timeScale;
        track.tables[0] = Box::full("stts").u32(1).u32(track.samples).u32(1001);
        MovFileReader reader;
        QCOMPARE(reader.Open(store(movieFile(movie({track})))), 0u);
        for (uint32_t i = 1; i < track.samples; ++i) {
            SampleInfo info;
            uint32_t index = 0;
            QCOMPARE(reader.GetSampleInfo(i, &info), 0u);
            QCOMPARE(reader.GetSampleIndexForTime(info.time, &index), 0u);
            QCOMPARE(index, i);
            QCOMPARE(reader.GetSampleIndexForTime(info.time - 1, &index), 0u);
            QCOMPARE(index, i - 1);
        }
        uint32_t index = 0;
        QCOMPARE(reader.GetSampleIndexForTime(UINT64_MAX, &index), 0x40002u);
    }
}

void tst_Tracks::runsCountNoMoreThanTheirFieldHolds()
{
    constexpr uint32_t kMost = 0xFFFFFFFF;
    TimeToSampleAtom times;
    CompositionOffsetsAtom offsets;
    for (const uint32_t count : {kMost - 1, 1u, 1u}) {
        QCOMPARE(times.AddEntry(count, 2), MovAtom::ERROR_OKAY);
        QCOMPARE(offsets.AddEntry(count, -2), MovAtom::ERROR_OKAY);
    }
    QCOMPARE(times.entries.size(), size_t(2));
    QCOMPARE(times.entries[0].sampleCount, kMost);
    QCOMPARE(times.entries[1].sampleCount, 1u);
    QCOMPARE(offsets.entries.size(), size_t(2));
    QCOMPARE(offsets.entries[0].sampleCount, kMost);
    QCOMPARE(offsets.entries[1].sampleCount, 1u);
    uint32_t index = 0;
    QCOMPARE(times.GetSampleIndex(uint64_t(kMost) * 2 + 1, &index), MovAtom::ERROR_OKAY);
    QCOMPARE(index, kMost);
    QCOMPARE(times.AddEntry(1, 2), MovAtom::ERROR_OKAY);
    QCOMPARE(times.GetSampleIndex(uint64_t(kMost) * 2 + 2, &index), MovAtom::ERROR_INVALID_RET_VAL);
}

void tst_Tracks::tracksAreCountedByTheirKind()
{
    const auto track = [](const char *handler, const char *name, uint32_t id, uint32_t samples) {
        TestTrack made;
        made.handler = handler;
        made.name = name;
        made.id = id;
        made.samples = samples;
        return made;
    };
    QList<TestTrack> tracks = {
        track("vide", "Video", 1, 25),    track("soun", "Sound", 2, 25),
        track("soun", "Silence", 3, 0),   track("meta", "Positions", 4, 25),
        track("meta", "", 5, 25),         track("meta", "The Tavro MET", 6, 7),
        track("tmcd", "Time code", 7, 25)};
    tracks[0].children = {Box("tref").child(Box("tmcd").u32(7))};
    MovFileReader reader;
    QCOMPARE(reader.Open(store(movieFile(movie(tracks)))), 0u);
    QCOMPARE(reader.GetTrackCount(FourCC("vide")), 1u);
    QCOMPARE(reader.GetTrackCount(FourCC("soun")), 1u);
    QCOMPARE(reader.GetTrackCount(FourCC("meta")), 1u);
    QCOMPARE(reader.GetTrackCount(FourCC("text")), 0u);
    QVERIFY(reader.HasTimeCode());
    QVERIFY(reader.HasMetadata());
    QVERIFY(!reader.HasText());
    uint32_t samples = 0;
    QCOMPARE(reader.GetSampleCount(&samples, {FourCC("soun"), 1}), 0u);
    QCOMPARE(samples, 0u);
    QCOMPARE(reader.GetSampleCount(&samples, {FourCC("meta"), 0}), 0u);
    QCOMPARE(samples, 7u); // other programs' metadata are passed over
    QCOMPARE(reader.GetSampleCount(&samples, {FourCC("meta"), 1}), 0x40002u);

    tracks = {track("vide", "Video", 1, 25), track("meta", "Positions", 2, 25),
              track("tmcd", "Time code", 3, 25), track("text", "Chapters", 4, 25)};
    QCOMPARE(reader.Open(store(movieFile(movie(tracks)))), 0u);
    QVERIFY(!reader.HasTimeCode()); // nothing refers to it
    QVERIFY(!reader.HasMetadata());
    QVERIFY(reader.HasText());
}

void tst_Tracks::timeIsToldInEveryUnit()
{
    TestTrack video;
    video.timeScale = 30000;
    video.duration = 45000;
    video.children = {Box("tref").child(Box("tmcd").u32(2))};
    TestTrack timeCode;
    timeCode.handler = "tmcd";
    timeCode.id = 2;
    timeCode.timeScale = 0;
    timeCode.tables.last() = Box::full("stco").u32(1).u32(3000);
    QByteArray bytes = movieFile(movie({video, timeCode}));
    bytes.append(4000 - bytes.size(), '\0').replace(3000, 4, Box::encode(107892, 4));
    MovFileReader reader;
    QCOMPARE(reader.Open(store(bytes)), 0u);
    uint32_t number = 0;
    double seconds = 0;
    QCOMPARE(reader.GetMovieTimeScale(&number), 0u);
    QCOMPARE(number, 600u);
    QCOMPARE(reader.GetTimeScale(&number), 0u);
    QCOMPARE(number, 30000u);
    QCOMPARE(reader.GetTrackDuration(&number), 0u);
    QCOMPARE(number, 45000u);
    QCOMPARE(reader.GetTrackSeconds(&seconds), 0u);
    QCOMPARE(seconds, 1.5);
    QCOMPARE(reader.GetTrackSeconds(&seconds, {FourCC("tmcd"), 0}), 0u);
    QCOMPARE(seconds, 0.0); // it has no time scale
    QCOMPARE(reader.GetTrackSeconds(&seconds, {FourCC("soun"), 0}), 0x40002u);
    QCOMPARE(reader.GetTrackDuration(&number, {FourCC("soun"), 0}), 0x40002u);
    QCOMPARE(reader.GetTimeCodeStart(&number), 0u);
    QCOMPARE(number, 107892u);
    QCOMPARE(reader.GetTimeCodeStart(nullptr), 5u);

    video.children.clear();
    QCOMPARE(reader.Open(store(movieFile(movie({video, timeCode})))), 0u);
    QCOMPARE(reader.GetTimeCodeStart(&number), 0x40002u);
}

void tst_Tracks::syncSamplesAreFoundInAnyOrder_data()
{
    QTest::addColumn<QList<uint>>("numbers");
    QTest::newRow("ascending") << QList<uint>{1, 4, 4, 9, 30};
    QTest::newRow("one") << QList<uint>{7};
    QTest::newRow("none") << QList<uint>{};
    QTest::newRow("out of order at its end") << QList<uint>{2, 3, 5, 8, 1};
    QTest::newRow("descending") << QList<uint>{30, 9, 4, 1};
}

void tst_Tracks::syncSamplesAreFoundInAnyOrder()
{
    QFETCH(QList<uint>, numbers);
    SyncSampleAtom atom;
    for (const uint number : qAsConst(numbers))
        QCOMPARE(atom.AddSample(number), MovAtom::ERROR_OKAY);
    const auto finds = [&] {
        for (uint number = 0; number < 32; ++number) {
            if (atom.Contains(number) != numbers.contains(number))
                return false;
        }
        return true;
    };
    QVERIFY(finds());
    numbers.append(3); // what was known of the order does not hold any more
    QCOMPARE(atom.AddSample(3), MovAtom::ERROR_OKAY);
    QVERIFY(finds());
}

namespace {

// A question to the sample layers of a track, and what it comes to on a video track.
struct Question
{
    const char *name;
    std::function<MovAtom::Error(const MediaInformationAtom &)> ask;
    MovAtom::Error onVideo;
};

template <class... Parameter, class... Argument>
std::function<MovAtom::Error(const MediaInformationAtom &)>
with(MovAtom::Error (MediaInformationAtom::*question)(Parameter...) const, Argument... argument)
{
    return [=](const MediaInformationAtom &layers) { return (layers.*question)(argument...); };
}

const std::vector<Question> &questions()
{
    using Layers = MediaInformationAtom;
    static uint32_t number, other;
    static uint64_t wide;
    static int64_t time;
    static int32_t id;
    static double rate;
    static float angle;
    static std::string text;
    static SampleInfo info;
    static SampleChunk chunk;
    static const PixelAspectAtom *aspect;
    static const ColorAtom *color;
    static const FieldsAtom *fields;
    static const AVCCAtom *avcc;
    static const HVCCAtom *hvcc;
    static const EsdsAtom *esds;
    static const SoundSampleDescription *sound;
    static const TimeCodeSampleDescription *timeCode;
    constexpr auto kOkay = MovAtom::ERROR_OKAY;
    constexpr auto kAbsent = MovAtom::ERROR_ATOM_NOT_FOUND;
    constexpr auto kNoSound = MovAtom::ERROR_INVALID_RET_VAL;
    static const std::vector<Question> all = {
        {"sample count", with(&Layers::GetSampleCount, &number), kOkay},
        {"sample", with(&Layers::GetSampleInfo, 4u, &info), kOkay},
        {"size", with(&Layers::GetSampleSize, 4u, &number), kOkay},
        {"time", with(&Layers::GetSampleTime, 4u, &wide, &number), kOkay},
        {"time of display", with(&Layers::GetDisplayTime, 4u, &time), kOkay},
        {"sample at a time", with(&Layers::GetSampleIndexForTime, uint64_t(0), &number), kOkay},
        {"position", with(&Layers::GetSamplePosition, 4u, &wide), kOkay},
        {"codec", with(&Layers::GetCodec, &number), kOkay},
        {"aspect", with(&Layers::GetPixelAspect, &aspect), kOkay},
        {"color", with(&Layers::GetColorParameters, &color), kAbsent},
        {"fields", with(&Layers::GetFields, &fields), kAbsent},
        {"avcC", with(&Layers::GetAvcConfiguration, &avcc), kAbsent},
        {"hvcC", with(&Layers::GetHevcConfiguration, &hvcc), kAbsent},
        {"stereo mode", with(&Layers::GetStereoMode, &number), kOkay},
        {"projection", with(&Layers::GetProjection, &number), kOkay},
        {"pose", with(&Layers::GetInitialPose, &angle, &angle, &angle), kOkay},
        {"tool", with(&Layers::GetWritingTool, &text), kOkay},
        {"sound", with(&Layers::GetSoundDescription, &sound), kNoSound},
        {"channels", with(&Layers::GetChannelCount, &number), kNoSound},
        {"bits", with(&Layers::GetSampleBits, &number), kNoSound},
        {"rate", with(&Layers::GetSampleRate, &rate), kNoSound},
        {"compression", with(&Layers::GetCompressionId, &id), kNoSound},
        {"packet", with(&Layers::GetBytesPerPacket, &number), kNoSound},
        {"esds", with(&Layers::GetEsds, &esds), kNoSound},
        {"time code", with(&Layers::GetTimeCodeDescription, &timeCode), kNoSound},
        {"chunk", with(&Layers::GetChunk, 4u, &chunk), kOkay},
        {"offset of a chunk", with(&Layers::GetChunkOffset, 3u, &wide), kOkay},
        {"chunk count", with(&Layers::GetChunkCount, &number), kOkay},
        {"frame size", with(&Layers::GetFrameSize, &number, &other), kOkay},
        {"durations", with(&Layers::GetDurationRange, &number, &other), kOkay},
    };
    return all;
}

} // namespace

void tst_Tracks::everyQuestionReachesItsTable_data()
{
    QTest::addColumn<int>("question");
    for (size_t i = 0; i < questions().size(); ++i)
        QTest::newRow(questions()[i].name) << int(i);
}

void tst_Tracks::everyQuestionReachesItsTable()
{
    QFETCH(int, question);
    TestTrack video = fiveSamples();
    video.descriptionChildren = {Box("pasp").u32(1).u32(1)};
    TestTrack subtitles;
    subtitles.handler = "subt";
    ExactBuffer buffer(movie({video, subtitles}).bytes());
    MovieAtom movie;
    QCOMPARE(movie.Read(*buffer), MovAtom::ERROR_OKAY);
    const Question &asked = questions()[size_t(question)];
    QCOMPARE(asked.ask(movie.tracks[0].Information()), asked.onVideo);
    const MediaInformationAtom &none = movie.tracks[1].Information();
    QCOMPARE(asked.ask(none), MovAtom::ERROR_INVALID_RET_VAL);
    QVERIFY(!none.HasSamples() && !none.IsSyncSample(0) && !none.GetSampleTable());
}

void tst_Tracks::whatWasReadIsPrintedAsRewritten()
{
    MovFileReader reader;
    QCOMPARE(reader.Open(store(movieFile(movie({fiveSamples()})))), 0u);
    QByteArray printed;
    {
        StreamCapture capture(stdout);
        QCOMPARE(reader.PrintRewritten(), 0u);
        printed = capture.text();
    }
    std::string expected;
    reader.Movie().PrintToString(&expected, 0); // written once, it has the sizes of the copy
    QCOMPARE(printed, QByteArray::fromStdString(expected));
    QVERIFY(printed.contains("SampleSizeTable: 0000000001  "));
}

// Tables refer to the bytes that the reader loaded until somebody changes them.
void tst_Tracks::tablesOutliveTheirReader()
{
    auto reader = std::make_unique<MovFileReader>();
    QCOMPARE(reader->Open(store(movieFile(movie({fiveSamples()})))), 0u);
    const MovieAtom copy = reader->Movie();
    const MovieAtom moved = std::move(reader->Movie());
    reader.reset();
    for (const MovieAtom *left : {&copy, &moved}) {
        SampleTableAtom *table = left->tracks.front().Information().GetSampleTable();
        QCOMPARE(table->sampleSizes.AddSample(6), MovAtom::ERROR_OKAY);
        QVERIFY(table->chunkOffsets.offsets.Set(0, 7));
        QCOMPARE(table->chunkOffsets.offsets[0], uint64_t(7));
        QCOMPARE(table->chunkOffsets.offsets[2], uint64_t(3000));
        uint32_t bytes = 0;
        QCOMPARE(table->sampleSizes.GetSampleSize(4, &bytes, nullptr), MovAtom::ERROR_OKAY);
        QCOMPARE(bytes, 5u);
        QCOMPARE(table->sampleSizes.GetSampleSize(5, &bytes, nullptr), MovAtom::ERROR_OKAY);
        QCOMPARE(bytes, 6u);
    }
}

// The look-ups keep cursors: going back, jumping and walking must not differ.
void tst_Tracks::aWalkIsTheSameInEveryOrder()
{
    const uint32_t count = 3000;
    Box sizes = Box::full("stsz").u32(0).u32(count);
    Box times = Box::full("stts").u32(count / 10);
    Box runs = Box::full("stsc").u32(count / 100);
    Box offsets = Box::full("co64").u32(count);
    for (uint32_t i = 0; i < count; ++i)
        sizes = std::move(sizes).u32(1 + i % 97);
    for (uint32_t i = 0; i < count / 10; ++i)
        times = std::move(times).u32(10).u32(1 + i % 7);
    for (uint32_t i = 0; i < count / 100; ++i)
        runs = std::move(runs).u32(1 + 20 * i).u32(1 + i % 11).u32(1);
    for (uint32_t i = 0; i < count; ++i)
        offsets = std::move(offsets).u64((uint64_t(i) << 33) + 5);
    TestTrack track;
    track.tables = {sizes, times, runs, offsets, Box("free")};
    const QString path = store(movieFile(movie({track})));
    MovFileReader walker;
    MovFileReader jumper;
    QCOMPARE(walker.Open(path), 0u);
    QCOMPARE(jumper.Open(path), 0u);
    for (uint32_t i = 0; i < count; ++i) {
        SampleInfo walked;
        SampleInfo jumped;
        SampleInfo other;
        QCOMPARE(walker.GetSampleInfo(i, &walked), 0u);
        QCOMPARE(jumper.GetSampleInfo((i * 1237) % count, &other), 0u);
        QCOMPARE(jumper.GetSampleInfo(i, &jumped), 0u);
        QCOMPARE(jumped.position, walked.position);
        QCOMPARE(jumped.time, walked.time);
        QCOMPARE(jumped.duration, walked.duration);
    }
}

// The cursors of the look-ups must not outlive the tables that they are places in.
void tst_Tracks::aReplacedTableIsLookedUpAnew()
{
    MovFileReader reader;
    QCOMPARE(reader.Open(store(movieFile(movie({fiveSamples()})))), 0u);
    SampleTableAtom &table = *reader.Movie().tracks.front().Information().GetSampleTable();
    SampleInfo info;
    QCOMPARE(table.GetSampleInfo(4, &info), MovAtom::ERROR_OKAY); // all cursors at the end
    table.timeToSample->entries = {{5, 100}};
    table.compositionOffsets->entries = {{5, 1}};
    table.sampleToChunk.entries = {{1, 5, 1}};
    table.sampleSizes.sizes = {10, 20, 30, 40, 50};
    table.chunkOffsets.offsets = {7000};
    QCOMPARE(table.GetSampleInfo(4, &info), MovAtom::ERROR_OKAY);
    QCOMPARE(info.position, uint64_t(7100));
    QCOMPARE(info.time, uint64_t(401));
    QVERIFY(table.sampleSizes.sizes.Set(0, 11));
    QVERIFY(table.timeToSample->entries.Set(0, {5, 200}));
    QCOMPARE(table.GetSampleInfo(4, &info), MovAtom::ERROR_OKAY);
    QCOMPARE(info.position, uint64_t(7101));
    QCOMPARE(info.time, uint64_t(801));
    uint32_t index = 0;
    table.timeToSample->entries.clear();
    QVERIFY(table.timeToSample->entries.push_back({5, 1}));
    QCOMPARE(table.GetSampleIndexForTime(3, &index), MovAtom::ERROR_OKAY);
    QCOMPARE(index, 3u);
}

QTEST_APPLESS_MAIN(tst_Tracks)
#include "tst_tracks.moc"
