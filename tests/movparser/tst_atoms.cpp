// SPDX-License-Identifier: GPL-3.0-or-later
// One table over all atom classes: what every one of them must keep.
#include "atom_rows.h"

#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtTest/QtTest>

using namespace Tavro::MovParserLib;

class tst_Atoms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void initTestCase();
    void writesAndPrintsItsFields();
    void readsBackWhatWasWritten();
    void copiesDeeply();
    void failsWhenCutAtAnyByte();
    void skipsTrailingBytes();
    void refusesAnotherType();
    void refusesABufferTooSmallToWrite();

private:
    const AtomRow &row() const;

    AtomRows m_rows;
    QMap<QByteArray, QByteArray> m_dumps; ///< What each row is printed as, escaped.
};

namespace {

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

// Every test goes through all rows.
void tst_Atoms::initTestCase_data()
{
    addStructureRows(&m_rows);
    addSampleTableRows(&m_rows);
    addDescriptionRows(&m_rows);
    addMetadataRows(&m_rows);
    QTest::addColumn<int>("index");
    for (size_t i = 0; i < m_rows.size(); ++i)
        QTest::newRow(m_rows[i].name) << int(i);
}

void tst_Atoms::initTestCase()
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

const AtomRow &tst_Atoms::row() const
{
    QFETCH_GLOBAL(int, index);
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
    const auto [copy, assigned] = row().copies(row().makeFilled());
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
        if (error == MovAtom::ERROR_OKAY
            && row().has(AtomRow::SearchesChildren | AtomRow::UnreadTail))
            continue;
        QCOMPARE(error, MovAtom::ERROR_ATOM_READ_FAILED);
        QCOMPARE(buffer->Tell(), uint64_t(0));
    }
}

void tst_Atoms::skipsTrailingBytes()
{
    if (row().has(AtomRow::PreambleOnly | AtomRow::FillsAtom))
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

QTEST_APPLESS_MAIN(tst_Atoms)
#include "tst_atoms.moc"
