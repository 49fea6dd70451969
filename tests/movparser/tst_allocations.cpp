// SPDX-License-Identifier: GPL-3.0-or-later
// What the library does when memory ends, and how much of it a file can make it take.
#include "columns.h"
#include "movie.h"
#include "movparser/src/mov_file_reader.h"
#include "movparser/src/sound_sample_description.h"
#include "tests/fuzz/sample_movie.h"

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

    /// Whether the one that was to fail has done so. From here on none does.
    bool hasFailed() { return std::exchange(untilFailure, -1) < 0; }
} g_heap;

// Runs `act(n)` with the n-th allocation in it failing, for each n there is and once more without
// a failure: it sets the number and tells whether that allocation failed and whether all is as it
// should be then. It must leave no block behind.
template <class Act> void withEachAllocationFailing(Act &&act)
{
    for (int64_t n = 0;; ++n) {
        const int64_t before = g_heap.blocks;
        const auto [failed, isRight] = act(n);
        const int64_t left = g_heap.blocks - before;
        QVERIFY2(isRight, qPrintable(QStringLiteral("allocation %1").arg(n)));
        QCOMPARE(left, int64_t(0));
        QVERIFY(failed || n > 0);
        if (!failed)
            return;
    }
}

// The most bytes taken at once.
template <class Act> int64_t peakOf(Act &&act)
{
    const int64_t before = g_heap.bytes;
    g_heap.peak = before;
    act();
    return g_heap.peak - before;
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
    void readingFailsWithoutMemory();
    void openingFailsWithoutMemory();
    void changingFailsWithoutMemory();
    void writingFailsWithoutMemory();
    void copyingATableThrowsWithoutMemory();
    void tablesInOnePlaceCountEach();
    void aSmallFileTakesLittleMemory_data();
    void aSmallFileTakesLittleMemory();
};

void tst_Allocations::readingFailsWithoutMemory()
{
    for (const MovieAtom &kind : {fullMovie(), legacyMovie()}) {
        QByteArray bytes = written(MovieAtom(kind)).append(Box("abcd").raw("kept"));
        bytes.replace(0, 4, Box::encode(uint64_t(bytes.size()), 4));
        ExactBuffer buffer(bytes);
        withEachAllocationFailing([&](int64_t n) {
            MovieAtom movie;
            static_cast<void>(buffer->Seek(0, 0));
            g_heap.untilFailure = n;
            const MovAtom::Error error = movie.Read(*buffer);
            const bool failed = g_heap.hasFailed();
            return std::pair(failed,
                             failed
                                 ? error == MovAtom::ERROR_ATOM_READ_FAILED && buffer->Tell() == 0
                                 : error == MovAtom::ERROR_OKAY && buffer->BytesLeft() == 0);
        });
    }
}

void tst_Allocations::openingFailsWithoutMemory()
{
    const FileOf file(movieFile(movie()));
    const QString path = file;
    withEachAllocationFailing([&](int64_t n) {
        MovFileReader reader;
        g_heap.untilFailure = n;
        const uint32_t error = reader.Open(path);
        const bool failed = g_heap.hasFailed();
        return std::pair(failed, (error != 0) == failed && reader.HasVideo() != failed);
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
        withEachAllocationFailing([&](int64_t n) {
            MovieAtom movie = start;
            g_heap.untilFailure = n;
            const MovAtom::Error error = change(movie);
            const bool failed = g_heap.hasFailed();
            return std::pair(failed,
                             failed ? error == MovAtom::ERROR_MEM_ALLOC && movie.tracks.size() == 1
                                     && movie.header.nextTrackId == start.header.nextTrackId
                                    : error == MovAtom::ERROR_OKAY);
        });
    }
}

// The channels of a sound field are numbered when it is written.
void tst_Allocations::writingFailsWithoutMemory()
{
    MovieAtom movie = fullMovie();
    movie.tracks[1].SampleDescriptions()->Sound()->spatialAudio->ambisonic_order = 3;
    movie.tracks[0].spherical.Ensure().SetStitchingSoftware("a name that has no room inside");
    ExactBuffer buffer(QByteArray(int(movie.GetSize()), '\0'));
    withEachAllocationFailing([&](int64_t n) {
        MovieAtom copy = movie;
        static_cast<void>(buffer->Seek(0, 0));
        g_heap.untilFailure = n;
        const MovAtom::Error error = copy.Write(*buffer);
        const bool failed = g_heap.hasFailed();
        return std::pair(failed,
                         failed ? error == MovAtom::ERROR_ATOM_WRITE_FAILED
                                : error == MovAtom::ERROR_OKAY && buffer->BytesLeft() == 0);
    });
}

void tst_Allocations::copyingATableThrowsWithoutMemory()
{
    const AtomTable<uint32_t> table = {1, 2, 3};
    g_heap.untilFailure = 0;
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(AtomTable<uint32_t>(table)), std::bad_alloc);
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
        const FileOf file(movieFile(movie(tracks, {Box("free").zeros(padding)})));
        MovFileReader reader;
        uint32_t opened = 1;
        const int64_t taken = peakOf([&] { opened = reader.Open(file); });
        QCOMPARE(opened, error);
        QVERIFY2(taken < 4 * file.size(), qPrintable(QString::number(taken)));
    }
}

void tst_Allocations::aSmallFileTakesLittleMemory_data()
{
    const auto row = columns<QByteArray>("bytes");
    TestTrack described;
    described.tables.prepend(
        Box::full("stsd").u32(1000000).child(Box("avc1").claims(0)).zeros(16000000));
    row("descriptions in one place", movie({described}));
    TestTrack referring;
    referring.children = {Box("tref").raw(Box("abcd").bytes().repeated(2000000)), Box("free")};
    row("references", movie({referring}));
    QByteArray unknown;
    for (uint32_t i = 0; i < 1000000; ++i)
        unknown.append(Box(Box::encode(i | 0x80000000U, 4)));
    row("unknown atoms", movie({TestTrack()}, {Box("udta").raw(unknown)}));
    // Headers that read on into the tracks behind them; a size of 7 ends each search.
    const QByteArray track = Box("trak").claims(32).bytes() + Box("tkhd").claims(8).bytes()
        + Box("mdia").claims(0x7fffffff).bytes() + Box("mdhd").claims(7).bytes();
    row("tracks that overlap", Box("moov").raw(track.repeated(150000)).zeros(200));
}

// The bound holds for what is kept; a vector that grows has up to twice as much for a moment.
void tst_Allocations::aSmallFileTakesLittleMemory()
{
    QFETCH(QByteArray, bytes);
    ExactBuffer buffer(bytes);
    MovAtom::Error error = MovAtom::ERROR_OKAY;
    const int64_t taken = peakOf([&] { error = MovieAtom().Read(*buffer); });
    QCOMPARE(error, MovAtom::ERROR_ATOM_READ_FAILED);
    const int64_t most = 2 * (2 * int64_t(bytes.size()) + (16 << 20));
    QVERIFY2(taken <= most, qPrintable(QStringLiteral("%1 of %2").arg(taken).arg(most)));
}

QTEST_APPLESS_MAIN(tst_Allocations)
#include "tst_allocations.moc"
