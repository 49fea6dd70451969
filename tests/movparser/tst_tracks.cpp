// SPDX-License-Identifier: GPL-3.0-or-later
// What tracks and their samples are asked: through the reader, through the table of operations, and
// by look-ups in any order.
#include "answer.h"
#include "movie.h"
#include "stream_capture.h"

#include <QtTest/QtTest>

using namespace Tavro::MovParserLib;

class tst_Tracks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTimeThatWasToldLeadsBack();
    void runsCountNoMoreThanTheirFieldHolds();
    void whatATableCannotSayIsNotWritten();
    void tracksAreCountedByTheirKind();
    void timeIsToldInEveryUnit();
    void syncSamplesAreFoundInAnyOrder();
    void whatWasReadIsPrintedAsRewritten();
    void samplesAreFoundAndRead();
    void tablesOutliveTheirReader();
    void aWalkIsTheSameInEveryOrder();
    void aReplacedTableIsLookedUpAnew();
};

namespace {

// Five samples in chunks of two, two and one, of 1 to 5 bytes at 1024, 2048 and 3000; the second
// and fourth are shown later than decoded, and the first and fourth are key samples.
TestTrack fiveSamples()
{
    TestTrack track;
    track.timeScale = 1000;
    track.tables = {Box::full("stsz").words({0, 5, 1, 2, 3, 4, 5}),
                    Box::full("stsc").words({2, 1, 2, 1, 3, 1, 1}),
                    Box::full("co64").u32(1).u64(9), // counts only without the next one
                    Box::full("stco").words({3, 1024, 2048, 3000}),
                    Box::full("stts").words({2, 3, 10, 2, 20}),
                    Box::full("ctts").words({4, 1, 0, 1, 5, 1, 0xFFFFFFFF, 2, 7}),
                    Box::full("stss").words({2, 1, 4}),
                    Box("free")};
    return track;
}

const SampleInfo kFive[] = {{1024, 1, 0, 10000, true},
                            {1025, 2, 15000, 10000, false},
                            {2048, 3, 19000, 10000, false},
                            {2051, 4, 37000, 20000, true},
                            {3000, 5, 57000, 20000, false}};

bool isSame(const SampleInfo &a, const SampleInfo &b)
{
    return std::tie(a.position, a.size, a.time, a.duration, a.isKey)
        == std::tie(b.position, b.size, b.time, b.duration, b.isKey);
}

} // namespace

void tst_Tracks::samplesAreFoundAndRead()
{
    QByteArray bytes = movieFile(movie({fiveSamples()}));
    bytes.append(4000 - bytes.size(), '\0').replace(2051, 4, "four");
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(bytes)), 0u);
    SampleInfo info;
    for (const uint32_t i : {0u, 4u, 2u, 1u, 3u, 3u, 0u}) {
        QCOMPARE(reader.GetSampleInfo(i, &info), 0u);
        QVERIFY(isSame(info, kFive[i]));
    }
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
    QVERIFY(sample == *ExactBuffer("four"));
    QVERIFY(sample.timestamp == 37000 && sample.is_key);
    char memory[4] = {};
    uint64_t size = 0;
    QCOMPARE(reader.ReadSample(3, memory, 3, &size), 0x40001u);
    QCOMPARE(reader.ReadSample(3, memory, 4, &size), 0u);
    QCOMPARE(QByteArray(memory, int(size)), QByteArray("four"));
    uint32_t shortest = 0;
    uint32_t longest = 0;
    QCOMPARE(reader.GetDurationRange(&shortest, &longest), 0u);
    QVERIFY(shortest == 10 && longest == 20);

    TestTrack timeless = fiveSamples();
    timeless.tables.removeAt(4);
    QCOMPARE(reader.Open(FileOf(movieFile(movie({timeless})))), 0u);
    QCOMPARE(reader.GetSampleIndexForTime(0, &index), 0x40003u);
}

// Times are told rounded down: what was told must lead back to the sample, and what is a
// microsecond less to the one before.
void tst_Tracks::aTimeThatWasToldLeadsBack()
{
    for (const uint32_t timeScale : {30000u, 90000u, 1000003u, 0u}) {
        TestTrack track;
        track.timeScale = timeScale;
        track.tables[0] = Box::full("stts").words({1, track.samples, 1001});
        MovFileReader reader;
        QCOMPARE(reader.Open(FileOf(movieFile(movie({track})))), 0u);
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
    QVERIFY(times.entries[0].sampleCount == kMost && times.entries.back().sampleCount == 1);
    QVERIFY(offsets.entries[0].sampleCount == kMost && offsets.entries.back().sampleCount == 1);
    uint32_t index = 0;
    QCOMPARE(times.GetSampleIndex(uint64_t(kMost) * 2 + 1, &index), MovAtom::ERROR_OKAY);
    QCOMPARE(index, kMost);
    QCOMPARE(times.AddEntry(1, 2), MovAtom::ERROR_OKAY);
    QCOMPARE(times.GetSampleIndex(uint64_t(kMost) * 2 + 2, &index), MovAtom::ERROR_INVALID_RET_VAL);
}

void tst_Tracks::whatATableCannotSayIsNotWritten()
{
    SampleSizeAtom sizes;
    sizes.sizes = {7, 9};
    sizes.sampleCount = 3;
    QCOMPARE(written(sizes), QByteArray());
    ChunkOffsetAtom offsets;
    offsets.offsets = {1, uint64_t{1} << 32};
    QCOMPARE(written(offsets), QByteArray());
    sizes.sampleCount = 2;
    offsets.type = ChunkOffsetAtom::kWideType;
    QVERIFY(!written(sizes).isEmpty() && !written(offsets).isEmpty());
}

void tst_Tracks::tracksAreCountedByTheirKind()
{
    const auto track = [](const char *handler, const char *name, uint32_t id, uint32_t samples) {
        return TestTrack{handler, name, id, 25, 25, samples};
    };
    QList<TestTrack> tracks = {
        track("vide", "Video", 1, 25),    track("soun", "Sound", 2, 25),
        track("soun", "Silence", 3, 0),   track("meta", "Positions", 4, 25),
        track("meta", "", 5, 25),         track("meta", "The Tavro MET", 6, 7),
        track("tmcd", "Time code", 7, 25)};
    tracks[0].children = {Box("tref").child(Box("tmcd").u32(7))};
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(movieFile(movie(tracks)))), 0u);
    for (const uint32_t kind : {FourCC("vide"), FourCC("soun"), FourCC("meta")})
        QCOMPARE(reader.GetTrackCount(kind), 1u);
    QVERIFY(reader.HasTimeCode() && reader.HasMetadata() && !reader.HasText());
    const auto samples = [&reader](uint32_t handler, uint32_t n) {
        return answer(reader, &MovFileReader::GetSampleCount, TrackRef{handler, n});
    };
    QCOMPARE(samples(FourCC("soun"), 1), "0");
    QCOMPARE(samples(FourCC("meta"), 0), "7"); // other programs' metadata are passed over
    QCOMPARE(samples(FourCC("meta"), 1), "0x40002");

    tracks = {track("vide", "Video", 1, 25), track("meta", "Positions", 2, 25),
              track("tmcd", "Time code", 3, 25), track("text", "Chapters", 4, 25)};
    QCOMPARE(reader.Open(FileOf(movieFile(movie(tracks)))), 0u);
    // Nothing refers to the time code.
    QVERIFY(!reader.HasTimeCode() && !reader.HasMetadata() && reader.HasText());
}

void tst_Tracks::timeIsToldInEveryUnit()
{
    TestTrack video{"vide", "Video", 1, 30000, 45000};
    video.children = {Box("tref").child(Box("tmcd").u32(2))};
    TestTrack timeCode{"tmcd", "Time code", 2, 0};
    timeCode.tables.last() = Box::full("stco").u32(1).u32(3000);
    QByteArray bytes = movieFile(movie({video, timeCode}));
    bytes.append(4000 - bytes.size(), '\0').replace(3000, 4, Box::encode(107892, 4));
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(bytes)), 0u);
    const TrackRef first;
    const TrackRef second = {FourCC("tmcd"), 0};
    const TrackRef none = {FourCC("soun"), 0};
    QCOMPARE(answer(reader, &MovFileReader::GetMovieTimeScale), "600");
    QCOMPARE(answer(reader, &MovFileReader::GetTimeScale, first), "30000");
    QCOMPARE(answer(reader, &MovFileReader::GetTrackDuration, first), "45000");
    QCOMPARE(answer(reader, &MovFileReader::GetTrackDuration, none), "0x40002");
    QCOMPARE(answer(reader, &MovFileReader::GetTrackSeconds, first), "1.5");
    QCOMPARE(answer(reader, &MovFileReader::GetTrackSeconds, second), "0"); // has no time scale
    QCOMPARE(answer(reader, &MovFileReader::GetTrackSeconds, none), "0x40002");
    uint32_t frame = 0;
    QCOMPARE(reader.GetTimeCodeStart(&frame), 0u);
    QCOMPARE(frame, 107892u);
    QCOMPARE(reader.GetTimeCodeStart(nullptr), 5u);

    video.children.clear();
    QCOMPARE(reader.Open(FileOf(movieFile(movie({video, timeCode})))), 0u);
    QCOMPARE(reader.GetTimeCodeStart(&frame), 0x40002u);
}

void tst_Tracks::syncSamplesAreFoundInAnyOrder()
{
    for (QList<uint> numbers : {QList<uint>{1, 4, 4, 9, 30}, {}, {2, 3, 5, 8, 1}, {30, 9, 4, 1}}) {
        SyncSampleAtom atom;
        const auto finds = [&] {
            for (uint number = 0; number < 32; ++number) {
                if (atom.Contains(number) != numbers.contains(number))
                    return false;
            }
            return true;
        };
        for (const uint number : qAsConst(numbers))
            QCOMPARE(atom.AddSample(number), MovAtom::ERROR_OKAY);
        QVERIFY(finds());
        numbers.append(3); // what was known of the order does not hold any more
        QCOMPARE(atom.AddSample(3), MovAtom::ERROR_OKAY);
        QVERIFY(finds());
    }
}

void tst_Tracks::whatWasReadIsPrintedAsRewritten()
{
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(movieFile(movie({fiveSamples()})))), 0u);
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
    QCOMPARE(reader->Open(FileOf(movieFile(movie({fiveSamples()})))), 0u);
    const MovieAtom copy = reader->Movie();
    const MovieAtom moved = std::move(reader->Movie());
    reader.reset();
    for (const MovieAtom *left : {&copy, &moved}) {
        SampleTableAtom *table = left->tracks.front().Information().GetSampleTable();
        QCOMPARE(table->sampleSizes.AddSample(6), MovAtom::ERROR_OKAY);
        QVERIFY(table->sampleSizes.sizes[4] == 5 && table->sampleSizes.sizes[5] == 6);
        const AtomTable<uint64_t> &offsets = table->chunkOffsets.offsets;
        QVERIFY(table->chunkOffsets.offsets.Set(0, 7));
        QVERIFY(offsets[0] == 7 && offsets[2] == 3000);
    }
}

// The look-ups keep cursors: going back, jumping and walking must not differ.
void tst_Tracks::aWalkIsTheSameInEveryOrder()
{
    const uint32_t count = 3000;
    Box sizes = Box::full("stsz").words({0, count});
    Box times = Box::full("stts").u32(count / 10);
    Box runs = Box::full("stsc").u32(count / 100);
    Box offsets = Box::full("co64").u32(count);
    for (uint32_t i = 0; i < count; ++i) {
        sizes = std::move(sizes).u32(1 + i % 97);
        offsets = std::move(offsets).u64((uint64_t(i) << 33) + 5);
        if (i < count / 10)
            times = std::move(times).words({10, 1 + i % 7});
        if (i < count / 100)
            runs = std::move(runs).words({1 + 20 * i, 1 + i % 11, 1});
    }
    TestTrack track;
    track.tables = {sizes, times, runs, offsets, Box("free")};
    const FileOf file(movieFile(movie({track})));
    MovFileReader walker;
    MovFileReader jumper;
    QVERIFY(walker.Open(file) == 0 && jumper.Open(file) == 0);
    for (uint32_t i = 0; i < count; ++i) {
        SampleInfo walked;
        SampleInfo jumped;
        QCOMPARE(walker.GetSampleInfo(i, &walked), 0u);
        QCOMPARE(jumper.GetSampleInfo((i * 1237) % count, &jumped), 0u);
        QCOMPARE(jumper.GetSampleInfo(i, &jumped), 0u);
        QVERIFY(isSame(jumped, walked));
    }
}

// The cursors of the look-ups must not outlive the tables that they are places in.
void tst_Tracks::aReplacedTableIsLookedUpAnew()
{
    MovFileReader reader;
    QCOMPARE(reader.Open(FileOf(movieFile(movie({fiveSamples()})))), 0u);
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
