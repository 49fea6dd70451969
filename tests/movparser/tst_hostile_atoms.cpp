// SPDX-License-Identifier: GPL-3.0-or-later
// Movies that lie: whatever the bytes say, reading ends, ends soon, and stays within the buffer.
#include "columns.h"
#include "movie.h"
#include "movparser/src/atom_moov.h"

#include <ctime>

using namespace Tavro::MovParserLib;

class tst_HostileAtoms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readingAMovieEnds_data();
    void readingAMovieEnds();
    void aSearchEnds_data();
    void aSearchEnds();
    void aCopyStaysWithinItsBytes();
    void aSampleThatCannotBeIsRefused_data();
    void aSampleThatCannotBeIsRefused();
    void anyFlippedByteIsSurvived();
};

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int kSlower = 10;
#else
constexpr int kSlower = 1;
#endif

constexpr bool kReads = true;
constexpr bool kFails = false;
constexpr uint64_t kWraps = 0xFFFFFFFFFFFFFFF8;

Box withChild(const Box &child)
{
    return movie({TestTrack()}, {child});
}

// A movie whose sample table holds this in place of its own table of the type.
Box withTable(const Box &table)
{
    TestTrack track;
    const QByteArray replaced = table.type() == "co64" ? "stco" : table.type();
    for (int i = track.tables.size() - 1; i >= 0; --i) {
        if (track.tables[i].type() == replaced)
            track.tables.removeAt(i);
    }
    // The last atom of a buffer is not found by a search, hence the one behind it.
    track.tables.append({table, Box("free")});
    return movie({track});
}

Box withTrackChild(const Box &child)
{
    TestTrack track;
    track.children = {child, Box("free")};
    return movie({track});
}

Box withDataReferences(const Box &dref)
{
    const Box handler = Box::full("hdlr").u32(0).raw("vide").zeros(13);
    const Box information = Box("minf").child(Box("dinf").child(dref)).child(Box("free"));
    const Box media =
        Box("mdia").child(Box::full("mdhd").zeros(20)).child(handler).child(information);
    return Box("moov").child(Box("trak").child(TestTrack().header()).child(media));
}

// Tracks whose `mdia` claims all the bytes behind it: each reads the next ones again.
Box overlappingTracks(int count)
{
    Box moov = Box("moov");
    const int each = TestTrack().box().bytes().size();
    for (int i = 0; i < count; ++i) {
        QByteArray track = TestTrack().box().bytes();
        const int media = track.indexOf("mdia") - 4;
        track.replace(media, 4, Box::encode(uint64_t((count - i) * each - media), 4));
        const int table = track.indexOf("stsz") + 8;
        track.replace(table, 8, Box::encode(uint64_t((count - i - 1) * each / 4), 8));
        moov = std::move(moov).raw(track);
    }
    return moov;
}

Box repeated(const char *parent, const Box &child, int count)
{
    return Box(parent).raw(child.bytes().repeated(count));
}

Box nested(int depth, const char *type)
{
    QByteArray bytes;
    for (int i = 0; i < depth; ++i)
        bytes.prepend(Box::encode(uint64_t(bytes.size() + 8), 4).append(type));
    return Box("moov").raw(bytes);
}

} // namespace

void tst_HostileAtoms::readingAMovieEnds_data()
{
    const auto row = columns<QByteArray, bool>("bytes", "reads");
    row("a movie as it should be", movie(), kReads);

    row("64-bit size of 0: moov", movie().claimsWide(0), kFails);
    row("64-bit size of 0: unknown child", withChild(Box("abcd").zeros(8).claimsWide(0)), kFails);
    row("64-bit size of 0: udta", withChild(Box("udta").claimsWide(0)), kFails);
    // A search gives up there and what it looked for counts as absent.
    row("64-bit size of 0: child of trak", withTrackChild(Box("abcd").claimsWide(0)), kReads);

    row("size of 0 ends a container", withChild(Box("abcd").claims(0)), kReads);
    row("size of 0 before the tracks", Box("moov").child(Box("abcd").claims(0)).child(movie()),
        kFails);

    for (const uint32_t size : {2u, 4u, 7u})
        row(qPrintable(QStringLiteral("unknown child of %1 bytes").arg(size)),
            withChild(Box("abcd").zeros(8).claims(size)), kFails);
    row("trak of 4 bytes", withChild(Box("trak").zeros(8).claims(4)), kFails);
    row("64-bit size of 15", withChild(Box("abcd").zeros(8).claimsWide(15)), kFails);
    const auto reference = [](const Box &entry) {
        return withDataReferences(Box::full("dref").u32(1).child(entry));
    };
    row("reference of 7 bytes", reference(Box("url ").zeros(8).claims(7)), kFails);
    row("reference that ends within its flags", reference(Box("url ").zeros(8).claims(9)), kReads);
    row("64-bit size of 0: data reference", reference(Box("url ").zeros(8).claimsWide(0)), kFails);

    row("size that wraps: unknown child", withChild(Box("abcd").zeros(8).claimsWide(kWraps)),
        kFails);
    row("size that wraps: trak", withChild(TestTrack().box().claimsWide(kWraps)), kReads);
    row("child that ends behind the buffer", withChild(Box("abcd").claims(0x7FFFFFFF)), kFails);

    for (const char *table : {"stts", "ctts", "stss", "stsc", "stco", "co64", "stsd"})
        row(QByteArray("4 billion entries: ").append(table).constData(),
            withTable(Box::full(table).u32(0xFFFFFFFF).zeros(64)), kFails);
    row("4 billion entries: stsz", withTable(Box::full("stsz").words({0, 0xFFFFFFFF})), kFails);
    row("4 billion entries: dref", withDataReferences(Box::full("dref").u32(0xFFFFFFFF).zeros(64)),
        kFails);
    row("4 billion entries: elst",
        withTrackChild(Box("edts").child(Box::full("elst").u32(0xFFFFFFFF).zeros(64))), kFails);
    row("4 billion samples of one size", withTable(Box::full("stsz").words({1, 0xFFFFFFFF})),
        kReads);
    const QByteArray empty = Box("avc1").claims(0).bytes();
    row("3 million descriptions with a fourcc and size 0",
        withTable(Box::full("stsd").u32(3000000).raw(
            QByteArray(empty).append(120, '\0').repeated(10000))),
        kFails);
    // They overlap, which is allowed; what bounds them is the memory that they take.
    const auto inOnePlace = [&empty](int count) {
        return withTable(Box::full("stsd").u32(uint64_t(count)).raw(empty).zeros(16 * count));
    };
    row("1,000 descriptions in one place", inOnePlace(1000), kReads);
    row("200,000 descriptions in one place", inOnePlace(200000), kFails);

    QByteArray handler = movie();
    handler.replace(handler.indexOf("hdlr") - 4, 4, Box::encode(0x7FFFFFFF, 4));
    row("handler that ends behind the buffer", handler, kFails);
    TestTrack track;
    track.information = {Box::full("hdlr").zeros(20).claims(0x7FFFFFFF)};
    row("data handler that ends behind the buffer", movie({track}), kFails);

    row("10,000 unknown siblings", repeated("moov", Box("abcd"), 10000), kFails);
    row("10,000 unknown siblings in stbl", withTable(repeated("abcd", Box("free"), 10000)), kReads);
    row("10,000 nested atoms", withChild(nested(10000, "nest")), kReads);
    row("10,000 nested tracks", nested(10000, "trak"), kFails);
    row("2,000 tracks", repeated("moov", TestTrack().box(), 2000), kReads);
    row("2,000 tracks that overlap", overlappingTracks(2000), kFails);
    row("200,000 references", withTrackChild(repeated("tref", Box("abcd"), 200000)), kReads);
}

void tst_HostileAtoms::readingAMovieEnds()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, reads);
    ExactBuffer buffer(bytes);
    MovieAtom movie;
    // The processor's time: a busy machine must not decide.
    const std::clock_t start = std::clock();
    const MovAtom::Error error = movie.Read(*buffer);
    const long milliseconds = (std::clock() - start) * 1000 / CLOCKS_PER_SEC;
    QVERIFY2(milliseconds < 100 * kSlower, qPrintable(QString::number(milliseconds)));
    QCOMPARE(error, reads ? MovAtom::ERROR_OKAY : MovAtom::ERROR_ATOM_READ_FAILED);
    QVERIFY(buffer->Tell() <= uint64_t(bytes.size()));
}

void tst_HostileAtoms::aSearchEnds_data()
{
    const auto addRow =
        columns<QByteArray, quint64, bool, quint64>("bytes", "limit", "found", "cursor");
    const auto row = [&addRow](const char *name, const Box &first, quint64 limit, bool found,
                               quint64 cursor) {
        addRow(name, first.bytes().append(Box("want").zeros(4)), limit, found, cursor);
    };
    const quint64 all = 1000;
    row("behind another atom", Box("abcd").zeros(2), all, true, 10);
    row("behind a 64-bit size", Box("abcd").zeros(2).wide(), all, true, 18);
    row("no room to search, on the atom itself", Box("want"), 0, false, 0);
    row("the limit ends before it", Box("abcd").zeros(2), 10, false, 10);
    row("a size of 0 stops where it is", Box("abcd").claims(0), all, false, 8);
    row("a 64-bit size of 0", Box("abcd").claimsWide(0), all, false, 0);
    row("a 64-bit size below its preamble", Box("abcd").claimsWide(15), all, false, 0);
    row("a size below the preamble", Box("abcd").claims(7), all, false, 0);
    row("a size that wraps", Box("abcd").claimsWide(kWraps), all, false, 0);
    row("another atom to the end of the buffer", Box("abcd").claims(20), all, false, 0);
    row("a cut preamble", Box("abcd").claims(17), all, false, 0);
}

void tst_HostileAtoms::aSearchEnds()
{
    QFETCH(QByteArray, bytes);
    QFETCH(quint64, limit);
    QFETCH(bool, found);
    ExactBuffer buffer(bytes);
    QCOMPARE(FindAtom(*buffer, FourCC("want"), limit),
             found ? MovAtom::ERROR_OKAY : MovAtom::ERROR_ATOM_NOT_FOUND);
    QTEST(quint64(buffer->Tell()), "cursor");
}

// Read with a 64-bit preamble, counted with a short one: the copy has 8 bytes that nobody gave.
void tst_HostileAtoms::aCopyStaysWithinItsBytes()
{
    UnparsedAtom atom;
    QCOMPARE(atom.Read(*ExactBuffer(Box("abcd").raw("data").wide())), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.DataSize(), uint64_t(4));
    const UnparsedAtom copy(atom);
    QByteArray data(12, 'x');
    uint64_t size = 0;
    const auto read = [&](uint64_t capacity) {
        return copy.GetData(reinterpret_cast<uint8_t *>(data.data()), capacity, &size);
    };
    QCOMPARE(read(11), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(read(12), MovAtom::ERROR_OKAY);
    QCOMPARE(size, uint64_t(12));
    QCOMPARE(data, QByteArray("data").append(8, '\0'));
}

void tst_HostileAtoms::aSampleThatCannotBeIsRefused_data()
{
    const auto row = columns<QByteArray, uint, int>("bytes", "index", "error");
    const auto chunks = [&row](const char *name, std::initializer_list<uint32_t> runs, int error) {
        row(name, withTable(Box::full("stsc").words(runs)), 3, error);
    };
    chunks("no runs", {0}, MovAtom::ERROR_MALFORMED_ATOM);
    chunks("no samples in a chunk", {1, 1, 0, 1}, MovAtom::ERROR_MALFORMED_ATOM);
    chunks("no samples in the last run", {2, 1, 1, 1, 2, 0, 1}, MovAtom::ERROR_MALFORMED_ATOM);
    chunks("chunk 0", {1, 0, 25, 1}, MovAtom::ERROR_INVALID_ARG);
    chunks("a chunk behind the last", {1, 2, 25, 1}, MovAtom::ERROR_INVALID_ARG);
    chunks("runs that go back", {2, 9, 1, 1, 1, 0xFFFFFFFF, 1}, MovAtom::ERROR_OKAY);

    // The last of 4 billion samples: a signed time holds not all that it can come to.
    const auto times = [&row](const char *name, uint32_t duration, uint32_t offset, int error) {
        constexpr uint32_t kSamples = 0xFFFFFFFF;
        TestTrack track;
        track.tables = {Box::full("stsz").words({1, kSamples}),
                        Box::full("stsc").words({1, 1, kSamples, 1}),
                        Box::full("stco").words({1, 4096}),
                        Box::full("stts").words({1, kSamples, duration}),
                        Box::full("ctts").words({1, kSamples, offset}),
                        Box("free")};
        row(name, movie({track}), kSamples - 1, error);
    };
    times("the sum of times", 0x80000001, 0x7FFFFFFF, MovAtom::ERROR_MALFORMED_ATOM);
    times("the decoding time", 0xFFFFFFFF, 0, MovAtom::ERROR_MALFORMED_ATOM);
    times("a late sample that fits", 0x80000001, 0, MovAtom::ERROR_OKAY);
    times("shown before it is decoded", 0x80000001, 0x80000000, MovAtom::ERROR_OKAY);
}

void tst_HostileAtoms::aSampleThatCannotBeIsRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(uint, index);
    MovieAtom movie;
    QCOMPARE(movie.Read(*ExactBuffer(bytes)), MovAtom::ERROR_OKAY);
    SampleInfo info;
    QTEST(int(movie.tracks[0].Information().GetSampleInfo(index, &info)), "error");
}

void tst_HostileAtoms::anyFlippedByteIsSurvived()
{
    const QByteArray whole = withChild(Box("udta").child(Box("abcd").u32(1))).bytes();
    for (int i = 0; i < whole.size(); ++i) {
        for (const int mask : {0x01, 0x80, 0xFF}) {
            QByteArray bytes = whole;
            bytes[i] = char(bytes[i] ^ mask);
            MovieAtom movie;
            if (movie.Read(*ExactBuffer(bytes)) != MovAtom::ERROR_OKAY)
                continue;
            // What reads can be asked, written and read again.
            SampleInfo info;
            for (const TrackAtom &track : movie.tracks)
                static_cast<void>(track.Information().GetSampleInfo(24, &info));
            MovieAtom second;
            QCOMPARE(second.Read(*ExactBuffer(written(movie))), MovAtom::ERROR_OKAY);
            std::string text;
            std::string secondText;
            movie.PrintToString(&text, 0);
            second.PrintToString(&secondText, 0);
            QCOMPARE(secondText, text);
        }
    }
}

QTEST_APPLESS_MAIN(tst_HostileAtoms)
#include "tst_hostile_atoms.moc"
