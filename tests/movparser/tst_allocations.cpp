// SPDX-License-Identifier: GPL-3.0-or-later
// What the library does when memory ends, and how much of it a file can make it take.
#include "box.h"
#include "movie.h"
#include "movparser/src/mov_file_reader.h"
#include "movparser/src/sound_sample_description.h"
#include "tests/fuzz/sample_movie.h"

#include <QtCore/QTemporaryFile>
#include <QtTest/QtTest>

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>
#include <vector>

using namespace Tavro::MovParserLib;

namespace {

// Counts what the program takes by `new`; one of the next allocations can be made to fail.
struct Heap
{
    int64_t untilFailure = -1; ///< Allocations to go; below 0 none fails.
    int64_t blocks = 0;
    int64_t bytes = 0;
    int64_t peak = 0;
} g_heap;

// From here on the n-th allocation fails, until the object ends or is asked whether it has.
class FailingAllocation
{
public:
    explicit FailingAllocation(int64_t n) { g_heap.untilFailure = n; }

    ~FailingAllocation() { g_heap.untilFailure = -1; }

    FailingAllocation(const FailingAllocation &) = delete;
    FailingAllocation &operator=(const FailingAllocation &) = delete;

    bool hasFailed()
    {
        const bool failed = g_heap.untilFailure < 0;
        g_heap.untilFailure = -1;
        return failed;
    }
};

// What came of an operation.
struct Outcome
{
    bool memoryFailed;
    bool isRight; ///< For what happened to the memory.
};

// Runs `act(n)` with the n-th allocation in it failing, for each n there is and once more without
// a failure. It must leave no block behind.
template <class Act> void withEachAllocationFailing(Act &&act)
{
    for (int64_t n = 0;; ++n) {
        const int64_t before = g_heap.blocks;
        const Outcome outcome = act(n);
        const int64_t left = g_heap.blocks - before;
        QVERIFY2(outcome.isRight, qPrintable(QStringLiteral("allocation %1").arg(n)));
        QCOMPARE(left, int64_t(0));
        if (!outcome.memoryFailed) {
            QVERIFY(n > 0);
            return;
        }
    }
}

} // namespace

void *operator new(size_t size)
{
    void *block = g_heap.untilFailure-- == 0 ? nullptr : std::malloc(size != 0 ? size : 1);
    if (!block)
        throw std::bad_alloc();
    ++g_heap.blocks;
    g_heap.bytes += static_cast<int64_t>(malloc_usable_size(block));
    g_heap.peak = std::max(g_heap.peak, g_heap.bytes);
    return block;
}

void operator delete(void *block) noexcept
{
    if (!block)
        return;
    --g_heap.blocks;
    g_heap.bytes -= static_cast<int64_t>(malloc_usable_size(block));
    std::free(block);
}

void operator delete(void *block, size_t) noexcept
{
    operator delete(block);
}

// The standard library's forms come down to the two above, but those of a sanitizer do not.
void *operator new(size_t size, const std::nothrow_t &) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

void *operator new[](size_t size)
{
    return operator new(size);
}

void *operator new[](size_t size, const std::nothrow_t &tag) noexcept
{
    return operator new(size, tag);
}

void operator delete[](void *block) noexcept
{
    operator delete(block);
}

void operator delete[](void *block, size_t) noexcept
{
    operator delete(block);
}

class tst_Allocations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readingFailsWithoutMemory_data();
    void readingFailsWithoutMemory();
    void openingFailsWithoutMemory();
    void changingFailsWithoutMemory();
    void writingFailsWithoutMemory();
    void copyingATableThrowsWithoutMemory();
    void tablesInOnePlaceCountEach();
    void aSmallFileTakesLittleMemory_data();
    void aSmallFileTakesLittleMemory();
};

void tst_Allocations::readingFailsWithoutMemory_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const MovieAtom &movie, const QByteArray &more) {
        const std::vector<uint8_t> bytes = bytesOf(movie);
        QByteArray moov(reinterpret_cast<const char *>(bytes.data()), int(bytes.size()));
        moov.append(more).replace(0, 4, Box::encode(uint64_t(moov.size()), 4));
        QTest::newRow(name) << moov;
    };
    row("every kind of track", fullMovie(), Box("abcd").raw("kept").bytes());
    row("an older panorama", legacyMovie(), {});
}

void tst_Allocations::readingFailsWithoutMemory()
{
    QFETCH(QByteArray, bytes);
    ExactBuffer buffer(bytes);
    withEachAllocationFailing([&](int64_t n) -> Outcome {
        MovieAtom movie;
        static_cast<void>(buffer->Seek(0, 0));
        FailingAllocation failure(n);
        const MovAtom::Error error = movie.Read(*buffer);
        return failure.hasFailed()
            ? Outcome{true, error == MovAtom::ERROR_ATOM_READ_FAILED && buffer->Tell() == 0}
            : Outcome{false, error == MovAtom::ERROR_OKAY && buffer->BytesLeft() == 0};
    });
}

void tst_Allocations::openingFailsWithoutMemory()
{
    QTemporaryFile file;
    QVERIFY(file.open() && file.write(movieFile(movie())) > 0);
    file.close();
    const QString path = file.fileName();
    withEachAllocationFailing([&](int64_t n) -> Outcome {
        MovFileReader reader;
        FailingAllocation failure(n);
        const uint32_t error = reader.Open(path);
        const bool failed = failure.hasFailed();
        return {failed, (error != 0) == failed && reader.HasVideo() != failed};
    });
}

void tst_Allocations::changingFailsWithoutMemory()
{
    VideoTrackFormat video;
    video.codec = FourCC("avc1");
    video.width = video.height = 100;
    SoundTrackFormat sound;
    sound.codec = FourCC("sowt");
    sound.channels = 2;
    const std::string tool = "a tool with a long name";
    const std::vector<std::function<MovAtom::Error(MovieAtom &)>> changes = {
        [&](MovieAtom &movie) { return movie.AddVideoTrack(video); },
        [&](MovieAtom &movie) { return movie.AddSoundTrack(sound); },
        [](MovieAtom &movie) { return movie.tracks[0].SetEquirectangular(1, 2, 3, 4); },
        [&](MovieAtom &movie) { return movie.tracks[0].SetWritingTool(tool, 1); },
        [](MovieAtom &movie) { return movie.tracks[0].media.information->AddSyncSample(1); },
        [](MovieAtom &movie) { return movie.tracks[0].media.information->AddSampleDependency(1); },
    };
    MovieAtom start;
    QCOMPARE(start.AddVideoTrack(video), MovAtom::ERROR_OKAY);
    for (const auto &change : changes) {
        withEachAllocationFailing([&](int64_t n) -> Outcome {
            MovieAtom movie = start;
            FailingAllocation failure(n);
            const MovAtom::Error error = change(movie);
            return failure.hasFailed()
                ? Outcome{true,
                          error == MovAtom::ERROR_MEM_ALLOC && movie.tracks.size() == 1
                              && movie.header.nextTrackId == start.header.nextTrackId}
                : Outcome{false, error == MovAtom::ERROR_OKAY};
        });
    }
}

void tst_Allocations::aSmallFileTakesLittleMemory_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const Box &child) {
        TestTrack track;
        track.children = {child, Box("free")};
        QTest::newRow(name) << movie({track}).bytes();
    };
    TestTrack track;
    track.tables.prepend(
        Box::full("stsd").u32(1000000).child(Box("avc1").claims(0)).zeros(16000000));
    QTest::newRow("descriptions in one place") << movie({track}).bytes();
    row("references", Box("tref").raw(Box("abcd").bytes().repeated(2000000)));
    QByteArray unknown;
    for (uint32_t i = 0; i < 1000000; ++i)
        unknown.append(Box(Box::encode(i | 0x80000000U, 4)).bytes());
    QTest::newRow("unknown atoms") << movie({TestTrack()}, {Box("udta").raw(unknown)}).bytes();
    // Headers that read on into the tracks behind them; a size of 7 ends each search.
    QByteArray tracks;
    for (int i = 0; i < 150000; ++i)
        tracks.append(Box("trak").claims(32).bytes() + Box("tkhd").claims(8).bytes()
                      + Box("mdia").claims(0x7fffffff).bytes() + Box("mdhd").claims(7).bytes());
    QTest::newRow("tracks that overlap") << Box("moov").raw(tracks).zeros(200).bytes();
}

// Tables that stay where they were read to cost no memory by themselves; whoever walks or prints
// them pays for each, so they count.
void tst_Allocations::tablesInOnePlaceCountEach()
{
    for (const auto &[padding, error] : {std::pair(256 << 10, 0U), {2 << 20, 0x40004U}}) {
        TestTrack track;
        track.tables.append(Box::full("stsz").words({0, uint32_t(padding / 4)}));
        QList<TestTrack> tracks;
        for (int i = 0; i < 28; ++i)
            tracks.append(track);
        QTemporaryFile file;
        const QByteArray bytes = movieFile(movie(tracks, {Box("free").zeros(padding)}));
        QVERIFY(file.open() && file.write(bytes) == bytes.size());
        file.close();
        MovFileReader reader;
        const int64_t before = g_heap.bytes;
        g_heap.peak = before;
        QCOMPARE(reader.Open(file.fileName()), error);
        const int64_t taken = g_heap.peak - before;
        QVERIFY2(taken < 4 * bytes.size(), qPrintable(QString::number(taken)));
    }
}

// The channels of a sound field are numbered when it is written.
void tst_Allocations::writingFailsWithoutMemory()
{
    MovieAtom movie = fullMovie();
    for (TrackAtom &track : movie.tracks) {
        SampleDescriptionAtom *descriptions = track.Information().GetSampleDescriptions();
        auto *sound = dynamic_cast<SoundSampleDescription *>(descriptions->entries.front().get());
        if (!sound)
            continue;
        sound->spatialAudio = std::make_unique<spatialAudioAtom>();
        sound->spatialAudio->ambisonic_order = 3;
    }
    movie.tracks.front().spherical.Ensure().SetStitchingSoftware("a name that has no room inside");
    ExactBuffer buffer(QByteArray(int(movie.GetSize()), '\0'));
    withEachAllocationFailing([&](int64_t n) -> Outcome {
        MovieAtom copy = movie;
        static_cast<void>(buffer->Seek(0, 0));
        FailingAllocation failure(n);
        const MovAtom::Error error = copy.Write(*buffer);
        return failure.hasFailed()
            ? Outcome{true, error == MovAtom::ERROR_ATOM_WRITE_FAILED}
            : Outcome{false, error == MovAtom::ERROR_OKAY && buffer->BytesLeft() == 0};
    });
}

void tst_Allocations::copyingATableThrowsWithoutMemory()
{
    const AtomTable<uint32_t> table = {1, 2, 3};
    FailingAllocation failure(0);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(AtomTable<uint32_t>(table)), std::bad_alloc);
}

// The bound holds for what is kept; a vector that grows has up to twice as much for a moment.
void tst_Allocations::aSmallFileTakesLittleMemory()
{
    QFETCH(QByteArray, bytes);
    ExactBuffer buffer(bytes);
    const int64_t before = g_heap.bytes;
    g_heap.peak = before;
    {
        MovieAtom movie;
        QCOMPARE(movie.Read(*buffer), MovAtom::ERROR_ATOM_READ_FAILED);
    }
    const int64_t taken = g_heap.peak - before;
    const int64_t most = 2 * (2 * int64_t(bytes.size()) + (16 << 20));
    QVERIFY2(taken <= most, qPrintable(QStringLiteral("%1 of %2").arg(taken).arg(most)));
}

QTEST_APPLESS_MAIN(tst_Allocations)
#include "tst_allocations.moc"
