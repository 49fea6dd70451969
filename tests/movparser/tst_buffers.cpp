// SPDX-License-Identifier: GPL-3.0-or-later
// The buffers, the files in blocks, the split of a sample, and the line that an error prints.
#include "columns.h"
#include "movie.h"
#include "movparser/src/report_error.h"
#include "movparser/src/sample_pool_buffer.h"
#include "movparser/src/sync_file_reader_qt.h"
#include "movparser/src/sync_file_writer_qt.h"
#include "stream_capture.h"

#include <QtCore/QTemporaryDir>

#include <cstdlib>

using namespace Tavro::MovParserLib;

class tst_Buffers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aBlockIsKeptWhenItFits();
    void blocksComeFromTheAllocatorAndMove();
    void aBlockElsewhereHasNoOwner();
    void samplesArePrinted();
    void seeksByTheirOwnRules_data();
    void seeksByTheirOwnRules();
    void readsAndWritesStopAtTheEnd();
    void filesAreReadInWholeBlocks_data();
    void filesAreReadInWholeBlocks();
    void filesAreWrittenOrRefused();
    void samplesAreSplit_data();
    void samplesAreSplit();
    void piecesHaveTheirTimesAndGoWithTheirBytes();
    void errorsPrintOneLine();
};

namespace {

class LoggingAllocator : public BufferAllocator
{
public:
    void *Alloc(unsigned long size) override { return logged("alloc ", std::malloc(size)); }

    void Free(void *ptr) override { std::free(logged("free ", ptr)); }

    void *AllocAligned(unsigned long size, unsigned long alignment) override
    {
        const unsigned long whole = (size + alignment - 1) / alignment * alignment;
        return logged("aligned ", std::aligned_alloc(alignment, whole));
    }

    void FreeAligned(void *ptr) override { std::free(logged("freeAligned ", ptr)); }

    void *logged(const char *what, void *ptr)
    {
        log += what;
        return ptr;
    }

    QByteArray log;
};

} // namespace

void tst_Buffers::aBlockIsKeptWhenItFits()
{
    GenericBuffer buffer;
    QCOMPARE(buffer.Alloc(0, 512, nullptr), GenericBuffer::ERROR_OKAY);
    QVERIFY(!buffer.GetBytes());
    QCOMPARE(buffer.Alloc(1000, 512, nullptr), GenericBuffer::ERROR_OKAY);
    const uint8_t *block = buffer.GetBytes();
    QCOMPARE(reinterpret_cast<uintptr_t>(block) % 512, uintptr_t(0));
    QCOMPARE(buffer.Alloc(10, 512, nullptr), GenericBuffer::ERROR_OKAY);
    QCOMPARE(buffer.GetBytes(), block);
    QCOMPARE(buffer.Alloc(10, 1024, nullptr), GenericBuffer::ERROR_OKAY);
    QCOMPARE(reinterpret_cast<uintptr_t>(buffer.GetBytes()) % 1024, uintptr_t(0));
    for (const unsigned long alignment : {0ul, 1ul, 2ul, 4ul, 8ul}) {
        GenericBuffer small;
        QCOMPARE(small.Alloc(3, alignment, nullptr), GenericBuffer::ERROR_OKAY);
    }
    QCOMPARE(buffer.Alloc(~0ul - 4096, 512, nullptr), GenericBuffer::ERROR_MEM_ALLOC);
    QVERIFY(!buffer.GetBytes());

    uint8_t own[4] = {1, 2, 3, 4};
    FileBuffer outside;
    QCOMPARE(outside.Alloc(100), GenericBuffer::ERROR_OKAY);
    QCOMPARE(outside.Alloc(4, own), GenericBuffer::ERROR_OKAY);
    QCOMPARE(outside.GetBytes(), own); // and the sanitizer sees it if it is freed
}

void tst_Buffers::blocksComeFromTheAllocatorAndMove()
{
    LoggingAllocator allocator;
    {
        GenericBuffer buffer(&allocator);
        QCOMPARE(buffer.SetAllocator(&allocator), GenericBuffer::ERROR_ALLOCATOR_EXISTS);
        QCOMPARE(buffer.Alloc(10, 0, nullptr), GenericBuffer::ERROR_OKAY);
        QCOMPARE(buffer.Alloc(10, 64, nullptr), GenericBuffer::ERROR_OKAY);
        GenericBuffer copy(buffer);
        GenericBuffer assigned;
        assigned = copy;
        QCOMPARE(assigned.GetBytes(), buffer.GetBytes());
        GenericBuffer target;
        assigned.TransferTo(target);
        QVERIFY(!assigned.GetBytes());
        QCOMPARE(target.GetBytes(), buffer.GetBytes());
    }
    QCOMPARE(allocator.log, QByteArray("alloc free aligned freeAligned "));
    {
        GenericBuffer buffer; // the block that it has goes back to the heap
        QCOMPARE(buffer.Alloc(10, 0, nullptr), GenericBuffer::ERROR_OKAY);
        QCOMPARE(buffer.SetAllocator(&allocator), GenericBuffer::ERROR_OKAY);
        GenericBuffer moved;
        buffer.TransferTo(moved);
        allocator.log.clear();
        QCOMPARE(moved.Alloc(100, 0, nullptr), GenericBuffer::ERROR_OKAY);
        QCOMPARE(allocator.log, QByteArray("alloc "));
    }
    QCOMPARE(allocator.log, QByteArray("alloc free "));

    ExactBuffer file(QByteArray(20, 'x'));
    FileBuffer moved;
    QCOMPARE(file->Skip(5), GenericBuffer::ERROR_OKAY);
    file->TransferTo(moved);
    QVERIFY(moved.Tell() == 5 && moved.BytesLeft() == 15);
    QVERIFY(file->BytesLeft() == 0 && !file->GetBytes());
}

void tst_Buffers::aBlockElsewhereHasNoOwner()
{
    const auto source = std::make_shared<FileBuffer>();
    const auto target = std::make_shared<FileBuffer>();
    for (const auto &buffer : {source, target}) {
        QCOMPARE(buffer->Alloc(10), GenericBuffer::ERROR_OKAY);
        buffer->SetOwner(buffer);
        QVERIFY(buffer->GetOwner());
    }
    FileBuffer copy(*source);
    QVERIFY(!copy.GetOwner() && source->GetOwner());
    *target = *source;
    QVERIFY(!target->GetOwner() && source->GetOwner());
    source->TransferTo(*target);
    QVERIFY(!source->GetOwner() && !target->GetOwner());
}

void tst_Buffers::samplesArePrinted()
{
    SampleBuffer sample;
    StreamCapture capture(stdout);
    sample.printDatas();
    QCOMPARE(capture.text(),
             QByteArray("printDatas() ERROR > SampleBuffer is empty, no datas to print..."));
    uint8_t bytes[] = {0x0f, 0xab, 0};
    QCOMPARE(sample.Alloc(sizeof bytes, bytes), GenericBuffer::ERROR_OKAY);
    QCOMPARE(sample.SetOffset(1), GenericBuffer::ERROR_OKAY);
    QCOMPARE(sample.SetLogicalSize(2), GenericBuffer::ERROR_OKAY);
    sample.printDatas();
    sample.printInfos();
    char infos[128];
    std::snprintf(infos, sizeof infos,
                  "AB 00 SampleBuffer datas @ %p\n"
                  "SampleBuffer datas (size : 2  /  offset : 1)\n",
                  static_cast<void *>(bytes));
    QVERIFY2(capture.text().endsWith(infos), capture.text().constData());
}

void tst_Buffers::seeksByTheirOwnRules_data()
{
    const auto row = columns<qint64, int, int, quint64>("distance", "whence", "error", "cursor");
    const int okay = FileBuffer::ERROR_OKAY;
    const int over = FileBuffer::ERROR_BUFFER_OVER_FLOW;
    const int under = FileBuffer::ERROR_BUFFER_UNDER_FLOW;
    // Ten bytes, cursor at 4.
    row("start: the end", 10, 0, okay, 10);
    row("start: behind the end", 11, 0, over, 4);
    row("start: before the first byte", -1, 0, under, 4);
    row("cursor: the end is refused, although the start can name it", 6, 1, over, 4);
    row("cursor: on", 5, 1, okay, 9);
    row("cursor: back", -4, 1, okay, 0);
    row("cursor: too far back", -5, 1, under, 4);
    row("cursor: as far back as can be told", INT64_MIN, 1, under, 4);
    row("end: back", -10, 2, okay, 0);
    row("end: too far back", -11, 2, under, 4);
    row("end: the end itself", 0, 2, over, 4);
    row("an unknown way", 0, 3, FileBuffer::ERROR_INVALID_ARG, 4);
}

void tst_Buffers::seeksByTheirOwnRules()
{
    QFETCH(qint64, distance);
    QFETCH(int, whence);
    ExactBuffer buffer(QByteArray(10, 'x'));
    QCOMPARE(buffer->Skip(4), FileBuffer::ERROR_OKAY);
    QTEST(int(buffer->Seek(distance, whence)), "error");
    QTEST(quint64(buffer->Tell()), "cursor");
    QCOMPARE(buffer->BytesLeft(), 10 - buffer->Tell());
}

void tst_Buffers::readsAndWritesStopAtTheEnd()
{
    ExactBuffer buffer("abcdef");
    char bytes[8] = {};
    QCOMPARE(buffer->Read(bytes, 4), FileBuffer::ERROR_OKAY);
    QCOMPARE(buffer->Read(bytes, 3), FileBuffer::ERROR_BUFFER_EMPTY);
    QCOMPARE(buffer->Read(bytes, -1), FileBuffer::ERROR_BUFFER_EMPTY);
    QCOMPARE(buffer->Write("XYZ", 3), FileBuffer::ERROR_BUFFER_FULL);
    QCOMPARE(buffer->Write("XY", 2), FileBuffer::ERROR_OKAY);
    QCOMPARE(buffer.bytes(), QByteArray("abcdXY"));
    QCOMPARE(buffer->Seek(0, 0), FileBuffer::ERROR_OKAY);
    QCOMPARE(buffer->Skip(7), FileBuffer::ERROR_BUFFER_OVER_FLOW);
    QCOMPARE(buffer->Tell(), uint64_t(6));
    QVERIFY(*buffer == *ExactBuffer("abcdXY"));
    QVERIFY(!(*buffer == *ExactBuffer("abcdXZ")));
}

void tst_Buffers::filesAreReadInWholeBlocks_data()
{
    const auto row = columns<qint64, qint64, int, quint64, quint64>("position", "length", "error",
                                                                    "offset", "block");
    const int okay = FileReader::ERROR_OKAY;
    const int pastEnd = FileReader::ERROR_ATTEMPT_TO_READ_PAST_EOF;
    // A file of 2000 bytes.
    row("within a block", 1000, 16, okay, 488, 512);
    row("over the border of a block", 1020, 16, okay, 508, 1024);
    row("more than the file", 0, 2001, pastEnd, 0, 0);
    row("the head makes up for what is missing at the end", 1990, 20, okay, 454, 512);
    row("behind the end, still in its block", 2040, 4, okay, 504, 512);
    row("in a block behind the end", 2048, 4, pastEnd, 0, 0);
    row("nothing, at the border of a block", 512, 0, FileReader::ERROR_READ_FAILED, 0, 0);
    row("before the file", -1, 4, FileReader::ERROR_FILE_POSITION, 0, 0);
}

void tst_Buffers::filesAreReadInWholeBlocks()
{
    QFETCH(qint64, position);
    QFETCH(qint64, length);
    QFETCH(int, error);
    QByteArray content;
    for (int i = 0; i < 2000; ++i)
        content += char(i % 251 + 1);
    SyncFileReaderQt reader;
    QCOMPARE(reader.Open(FileOf(content)), FileReader::ERROR_OKAY);
    FileBuffer buffer;
    QCOMPARE(reader.Read(buffer, 0, 600), FileReader::ERROR_OKAY); // a buffer may be used again
    QCOMPARE(int(reader.Read(buffer, position, length)), error);
    if (error != FileReader::ERROR_OKAY)
        return;
    uint64_t value = 0;
    buffer.GetOffset(&value);
    QTEST(quint64(value), "offset");
    buffer.GetFullBufferSize(&value);
    QTEST(quint64(value), "block");
    QCOMPARE(buffer.BytesLeft(), uint64_t(length));
    // What lies behind the end of the file reads as 0 and never as what was in memory.
    QByteArray wanted = content.mid(int(position), int(length));
    wanted.append(int(length) - wanted.size(), '\0');
    QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer.GetData()), int(length)), wanted);
}

void tst_Buffers::filesAreWrittenOrRefused()
{
    const QTemporaryDir folder;
    const QString missing = folder.filePath(QStringLiteral("none/none"));
    const QString path = folder.filePath(QStringLiteral("wr\u00EFtten"));
    ExactBuffer buffer("abcdef");
    SyncFileReaderQt reader;
    QCOMPARE(reader.Open(""), FileReader::ERROR_FILE_PATH);
    QCOMPARE(reader.Open(missing), FileReader::ERROR_FILE_OPEN);
    QCOMPARE(reader.Read(*buffer, 0, 4), FileReader::ERROR_FILE_OPEN);
    SyncFileWriterQt writer;
    QCOMPARE(writer.Open(""), FileWriter::ERROR_FILE_PATH);
    QCOMPARE(writer.Open(missing), FileWriter::ERROR_FILE_OPEN);
    QCOMPARE(writer.Write(*buffer, 4), FileWriter::ERROR_FILE_OPEN);
    QCOMPARE(writer.Tell(), int64_t(-1));

    QCOMPARE(writer.Open(path.toUtf8().constData()), FileWriter::ERROR_OKAY);
    QCOMPARE(writer.Write(*buffer, 6), FileWriter::ERROR_OKAY);
    QCOMPARE(writer.Write(*buffer, 7), FileWriter::ERROR_WRITE_FAILED);
    QCOMPARE(writer.Write(*buffer, 2, 8), FileWriter::ERROR_OKAY);
    QCOMPARE(writer.Tell(), int64_t(10));
    writer.Close();
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("abcdef\0\0ab", 10));
}

void tst_Buffers::samplesAreSplit_data()
{
    const auto addRow = columns<QByteArrayList, QByteArrayList, QByteArrayList, bool>(
        "sample", "stored", "pieces", "key");
    const auto unit = [](const char *bytes) { return Box::encode(strlen(bytes), 4).append(bytes); };
    const QByteArray code("\0\0\0\1", 4);
    const QByteArray delimiter = unit("\x09z");
    const QByteArray info = unit("\x06i");
    const QByteArray parameters = unit("\x67p");
    const QByteArray picture = unit("\x41pic");
    const QByteArray keyPicture = unit("\x65key");
    const auto row = [&addRow](const char *name, const QByteArrayList &sample,
                               const QByteArrayList &pieces, bool key = false,
                               const QByteArrayList &stored = {}) {
        addRow(name, sample, stored.isEmpty() ? sample : stored, pieces, key);
    };
    row("length prefixes", {info, keyPicture, delimiter, picture, delimiter},
        {info + keyPicture, delimiter + picture}, true);
    row("parameter sets alone open no group", {parameters, picture, delimiter}, {picture});
    row("the unit that runs to the end is not taken", {picture, picture}, {picture});
    row("a unit that runs past the end is not taken", {picture, Box::encode(6, 4), "abc"},
        {picture});
    row("a first length larger than the sample", {Box::encode(9, 4), "abcd"}, {});
    row("three bytes", {"abc"}, {});
    row("start codes, replaced by lengths", {code, "\x09z", code, "\x65key", code, "\x41pic"},
        {delimiter + keyPicture, picture}, true, {delimiter, keyPicture, picture});
    const QByteArray long8 = Box::encode(8, 4) + "\x41pic" + code;
    row("a start code in the last four bytes", {code, "\x41pic", code}, {long8}, false, {long8});
    row("a code of three bytes tells the format and opens no unit",
        {QByteArray("\0\0\1", 3), "\x41pic"}, {});
}

void tst_Buffers::samplesAreSplit()
{
    QFETCH(QByteArrayList, sample);
    QFETCH(QByteArrayList, stored);
    QFETCH(QByteArrayList, pieces);
    ExactBuffer<SamplePoolBuffer> pool(sample.join());
    pool->timestamp = 7;
    pool->duration = 8;
    for (int times = 0; times < 2; ++times)
        QCOMPARE(pool->Parse(), size_t(pieces.size()));
    for (int i = 0; i < pieces.size(); ++i) {
        SampleBuffer *piece = pool->GetPiece(size_t(i));
        QVERIFY(*piece == *ExactBuffer(pieces[i]));
        QVERIFY(piece->timestamp == 7 && piece->duration == 8);
    }
    QVERIFY(!pool->GetPiece(size_t(pieces.size())));
    QTEST(pool->is_key, "key");
    QCOMPARE(pool.bytes(), stored.join());
}

void tst_Buffers::piecesHaveTheirTimesAndGoWithTheirBytes()
{
    const QByteArray prefixed = Box::encode(4, 4).append("\x41one").repeated(3);
    const QByteArray codes = QByteArray("\0\0\0\1\x41two", 8).repeated(2);
    const QByteArray large = QByteArray("\0\0\0\1\x41", 5).append(QByteArray(4000, 'l'));
    SamplePoolBuffer pool;
    for (const QByteArray &next : {prefixed, codes, prefixed, large, codes}) {
        const size_t count = next == large ? 1 : 2;
        QCOMPARE(pool.Alloc(size_t(next.size())), GenericBuffer::ERROR_OKAY);
        std::memcpy(pool.GetData(), next.constData(), size_t(next.size()));
        QCOMPARE(pool.GetPieceCount(), size_t(0)); // in the same block, in a larger one
        QVERIFY(!pool.GetPiece(0));
        QCOMPARE(pool.Parse(), count);
        const SampleBuffer *last = pool.GetPiece(count - 1);
        QVERIFY(pool.GetPiece(0)->GetData() == pool.GetData() && last->GetData()[5] == next[5]);
        pool.SetTimes({1, 2}, {3, 4}, {false, true});
        QVERIFY(last->timestamp == count && last->duration == count + 2);
        QCOMPARE(last->is_key, count == 2);
        // A queue that is too short must be missed.
        QVERIFY_EXCEPTION_THROWN(pool.SetTimes({}, {3, 4}, {false, true}), std::out_of_range);
    }
}

void tst_Buffers::errorsPrintOneLine()
{
    const struct
    {
        uint32_t domain, code;
        const char *line;
    } errors[] = {
        {0, 0, ""},
        {0, 7, "MovParser::Error  >>  ERROR_OP_FAILED\n"},
        {1, 8, "MovParser::Error  >>  \n"},
        {0xFFFF, 3, "MovParser::Error  >>  ERROR_FILE_NOT_COMPATIBLE\n"},
        {0x10000, 12, "FileReader::Error  >>  ERROR_BAD_MESSAGE\n"},
        {0x10000, 13, "FileReader::Error  >>  Unknown error code\n"},
        {0x20000, 11, "FileWriter::Error  >>  ERROR_BAD_MESSAGE\n"},
        {0x30000, 8, "GenericBuffer::Error  >>  ERROR_MALFORMED_OBJECT\n"},
        {0x40000, 11, "MovAtom::Error  >>  ERROR_ZERO_SIZE_ATOM\n"},
    };

    for (const auto &[domain, code, line] : errors) {
        StreamCapture capture;
        QCOMPARE(ReportError(domain, code), domain | code);
        QCOMPARE(capture.text(), QByteArray(line));
    }
}

QTEST_APPLESS_MAIN(tst_Buffers)
#include "tst_buffers.moc"
