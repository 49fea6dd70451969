// SPDX-License-Identifier: GPL-3.0-or-later
// One table over all atom classes: what every one of them must keep.
#include "atom_rows.h"
#include "movparser/src/atom_free.h"
#include "movparser/src/atom_mdat.h"
#include "movparser/src/atom_minf.h"

#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtTest/QtTest>

using namespace Tavro::MovParserLib;

class tst_Atoms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void writesAndPrintsItsFields_data() { rows(); }

    void writesAndPrintsItsFields();

    void readsBackWhatWasWritten_data() { rows(); }

    void readsBackWhatWasWritten();

    void copiesDeeply_data() { rows(); }

    void copiesDeeply();

    void failsWhenCutAtAnyByte_data() { rows(); }

    void failsWhenCutAtAnyByte();

    void skipsTrailingBytes_data() { rows(); }

    void skipsTrailingBytes();

    void refusesAnotherType_data() { rows(); }

    void refusesAnotherType();

    void refusesABufferTooSmallToWrite_data() { rows(); }

    void refusesABufferTooSmallToWrite();
    void sizesOfSpaceAreSetByTheirRules();
    void aPreambleInsistsOnItsType();
    void aNewTrackOfNeitherPicturesNorSoundHasItsHeader();

private:
    void rows() const;
    void loadDumps();
    const AtomRow &row() const;

    AtomRows m_rows;
    QMap<QByteArray, QByteArray> m_dumps; ///< What each row is printed as, escaped.
};

namespace {

QByteArray written(MovAtom &atom)
{
    ExactBuffer buffer(QByteArray(int(atom.GetSize()), '\x55'));
    if (atom.Write(*buffer) != MovAtom::ERROR_OKAY || buffer->BytesLeft() != 0)
        return "the size and the bytes written disagree";
    return buffer.bytes();
}

QByteArray printed(const MovAtom &atom, uint32_t depth = 0)
{
    std::string text;
    atom.PrintToString(&text, depth);
    return QByteArray::fromStdString(text);
}

// Dumps have blanks at the ends of lines and any byte in a fourcc: neither is
// fit for a text file.
QByteArray escaped(const QByteArray &text)
{
    QByteArray result;
    for (int i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool endsLine = c == ' ' && i + 1 < text.size() && text[i + 1] == '\n';
        if (c == '\n' || c == '\t' || (c >= ' ' && c <= '~' && c != '\\' && !endsLine))
            result += c;
        else
            result += "\\x" + QByteArray(1, c).toHex();
    }
    return result;
}

} // namespace

void tst_Atoms::initTestCase()
{
    loadDumps();
    addStructureRows(&m_rows);
    addSampleTableRows(&m_rows);
    addDescriptionRows(&m_rows);
    addMetadataRows(&m_rows);
}

void tst_Atoms::loadDumps()
{
    QFile file(QStringLiteral(TAVRO_SOURCE_DIR "/tests/movparser/atom_dumps.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray heading = "=== ";
    QByteArray name;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (line.startsWith(heading))
            name = line.mid(heading.size()).trimmed();
        else if (!name.isEmpty())
            m_dumps[name] += line;
    }
}

void tst_Atoms::rows() const
{
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < m_rows.size(); ++i)
        QTest::newRow(m_rows[i].name) << int(i);
}

const AtomRow &tst_Atoms::row() const
{
    QFETCH(int, index);
    return m_rows[size_t(index)];
}

void tst_Atoms::writesAndPrintsItsFields()
{
    const auto atom = row().makeFilled();
    QCOMPARE(atom->GetSize(), uint64_t(row().expected.size()));
    QCOMPARE(written(*atom).toHex(' '), row().expected.toHex(' '));
    QCOMPARE(atom->size, uint64_t(row().expected.size()));
    const QByteArray text = printed(*atom);
    QCOMPARE(escaped(text), m_dumps.value(row().name));
    QByteArray deeper = "|\t|\t" + text;
    deeper.replace('\n', "\n|\t|\t").chop(4);
    QCOMPARE(printed(*atom, 2), deeper);
    atom->PrintToString(nullptr, 2);
}

void tst_Atoms::readsBackWhatWasWritten()
{
    const auto filled = row().makeFilled();
    static_cast<void>(written(*filled));
    const auto atom = row().make();
    ExactBuffer buffer(row().expected);
    for (int times = 0; times < 2; ++times) { // reading again replaces what was read
        QCOMPARE(buffer->Seek(0, 0), FileBuffer::ERROR_OKAY);
        QCOMPARE(atom->Read(*buffer), MovAtom::ERROR_OKAY);
        if (row().has(AtomRow::PreambleOnly)) {
            QCOMPARE(buffer->Tell(), uint64_t(8));
            QCOMPARE(atom->size, filled->size);
            continue;
        }
        QCOMPARE(buffer->BytesLeft(), uint64_t(0));
        QCOMPARE(printed(*atom), printed(*filled));
        QCOMPARE(written(*atom).toHex(' '), row().expected.toHex(' '));
    }
}

void tst_Atoms::copiesDeeply()
{
    auto source = row().makeFilled();
    const auto copy = row().copy(*source);
    const auto assigned = row().make();
    row().assign(*assigned, *source);
    row().assign(*assigned, *assigned);
    row().assign(*source, *row().make());
    source.reset();
    QCOMPARE(written(*copy).toHex(' '), row().expected.toHex(' '));
    QCOMPARE(written(*assigned).toHex(' '), row().expected.toHex(' '));
}

void tst_Atoms::failsWhenCutAtAnyByte()
{
    const int whole = row().has(AtomRow::PreambleOnly) ? 8 : row().expected.size();
    for (int length = 0; length < whole; ++length) {
        const auto atom = row().make();
        ExactBuffer buffer(row().expected.left(length));
        const MovAtom::Error error = atom->Read(*buffer);
        if (error == MovAtom::ERROR_OKAY) {
            if ((row().traits & (AtomRow::SearchesChildren | AtomRow::UnreadTail)) == 0)
                QFAIL(qPrintable(QStringLiteral("%1 bytes were enough").arg(length)));
            continue;
        }
        QCOMPARE(error, MovAtom::ERROR_ATOM_READ_FAILED);
        QCOMPARE(buffer->Tell(), uint64_t(0));
    }
}

void tst_Atoms::skipsTrailingBytes()
{
    if (row().traits & (AtomRow::PreambleOnly | AtomRow::FillsAtom))
        return;
    // Zeros: to a container's loop they are the end of its list.
    const int trailing = 9;
    QByteArray bytes = row().expected;
    bytes.append(trailing, '\0').append("next");
    bytes.replace(0, 4, Box::encode(uint64_t(row().expected.size() + trailing), 4));
    const auto atom = row().make();
    ExactBuffer buffer(bytes);
    QCOMPARE(atom->Read(*buffer), MovAtom::ERROR_OKAY);
    const int left = row().has(AtomRow::StopsBehindFields) ? 4 + trailing : 4;
    QCOMPARE(buffer->BytesLeft(), uint64_t(left));
    QCOMPARE(written(*atom).toHex(' '),
             row().expected.toHex(' ')); // the bytes are lost
}

void tst_Atoms::refusesAnotherType()
{
    if (row().has(AtomRow::AnyType))
        return;
    QByteArray bytes = row().expected;
    bytes[7] = char(bytes[7] ^ 1);
    const auto atom = row().make();
    ExactBuffer buffer(bytes);
    QCOMPARE(atom->Read(*buffer), MovAtom::ERROR_ATOM_READ_FAILED);
    QCOMPARE(buffer->Tell(), uint64_t(0));
}

void tst_Atoms::refusesABufferTooSmallToWrite()
{
    const auto atom = row().makeFilled();
    const int whole = row().expected.size();
    for (int length = 0; length < whole; ++length) {
        ExactBuffer buffer(QByteArray(length, '\0'));
        QCOMPARE(atom->Write(*buffer), MovAtom::ERROR_ATOM_WRITE_FAILED);
    }
}

void tst_Atoms::sizesOfSpaceAreSetByTheirRules()
{
    constexpr uint64_t kPast32Bits = uint64_t{1} << 32;
    QCOMPARE(FreeAtom(8).freePayloadSize, uint64_t(0));
    QCOMPARE(FreeAtom(0xFFFFFFFF).freePayloadSize, uint64_t(0xFFFFFFFF - 8));
    QCOMPARE(FreeAtom(kPast32Bits).freePayloadSize, kPast32Bits - 16);
    FreeAtom space(20);
    QCOMPARE(space.SetSize(8), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(space.freePayloadSize, uint64_t(12));
    QCOMPARE(space.SetSize(9), MovAtom::ERROR_OKAY);
    QCOMPARE(space.freePayloadSize, uint64_t(1));
    QCOMPARE(space.SetSize(kPast32Bits), MovAtom::ERROR_OKAY);
    QCOMPARE(space.freePayloadSize, kPast32Bits - 16);

    // What counts is the size that it has and not the one that it is to get.
    MdatAtomPrefix empty(8);
    QCOMPARE(empty.SetSize(100), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(empty.GetSize(), uint64_t(8));
    MdatAtomPrefix media(9);
    QCOMPARE(media.SetSize(3), MovAtom::ERROR_OKAY);
    QCOMPARE(media.GetSize(), uint64_t(3));
}

void tst_Atoms::aPreambleInsistsOnItsType()
{
    ExactBuffer buffer(Box("abcd").wide().bytes());
    MovAtom atom;
    QCOMPARE(atom.Read(*buffer, FourCC("abce")), MovAtom::ERROR_WRONG_ATOM_TYPE);
    QCOMPARE(buffer->Tell(), uint64_t(0));
    QCOMPARE(atom.Read(*buffer, FourCC("abcd")), MovAtom::ERROR_OKAY);
    QCOMPARE(buffer->Tell(), uint64_t(16));
    ExactBuffer zero(Box("abcd").claims(0).bytes()); // refused only where any type will do
    QCOMPARE(atom.Read(*zero), MovAtom::ERROR_ZERO_SIZE_ATOM);
    QCOMPARE(atom.Read(*zero, FourCC("abcd")), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.size, uint64_t(0));
}

void tst_Atoms::aNewTrackOfNeitherPicturesNorSoundHasItsHeader()
{
    const auto information = MakeMediaInformation(FourCC("tmcd"));
    QCOMPARE(information->CreateSampleTable(), MovAtom::ERROR_OKAY);
    const auto *base = dynamic_cast<const BaseMediaInformationAtom *>(information.get());
    QVERIFY(base && base->header && base->header->mediaInfo);
}

QTEST_APPLESS_MAIN(tst_Atoms)
#include "tst_atoms.moc"
