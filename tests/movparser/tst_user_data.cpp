// SPDX-License-Identifier: GPL-3.0-or-later
// The maker's atoms and the entries of description tables: what they do beyond the common contract.
#include "movie.h"
#include "movparser/src/atom_esds.h"
#include "movparser/src/atom_stsd.h"
#include "movparser/src/atom_udta.h"
#include "movparser/src/mov_file_reader.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/time_code_sample_description.h"
#include "movparser/src/video_sample_description.h"

#include <QtTest/QtTest>

using namespace Tavro::MovParserLib;

namespace {

Box entry(const char *format, int fieldBytes)
{
    return Box(format).zeros(6).u16(1).zeros(fieldBytes);
}

} // namespace

class tst_UserData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void childrenReadOrFail_data();
    void childrenReadOrFail();
    void recordsOfAnotherSizeAreMalformed();
    void anEmptyFirmwareIsNone();
    void settingsAreDecodedFromThePreamble();
    void tags();
    void absentChildrenSaySo();
    void unknownChildrenAreHandedOut();
    void descriptionsReadOrFail_data();
    void descriptionsReadOrFail();
    void descriptionsAnswerForTheirKindOnly();
    void soundFormats();
    void theReaderHandsOutDescriptions();
};

void tst_UserData::childrenReadOrFail_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("reads");
    const auto row = [](const char *name, const Box &child, bool reads) {
        QTest::newRow(name) << Box("udta").child(child).bytes() << reads;
    };
    row("only unknown ones", Box("abcd").u8(1), true);
    row("the other spelling of LENS", Box("Lens").u8(1), false);
    row("TURI of 32 bytes", Box("TURI").zeros(24), false);
    row("TUSI of 16 bytes", Box("TUSI").zeros(8), false);
    row("SETT of three bytes", Box("SETT").zeros(3), true);
    row("HMMT that counts 101 and has 100", Box("HMMT").u32(101).zeros(400), true);
    row("HMMT that counts 100 and has 99", Box("HMMT").u32(100).zeros(396), false);
    row("CAME that claims more than there is", Box("CAME").claims(100).zeros(4), false);
    row("a known child of size 0 in 64 bits", Box("MUID").claimsWide(0), false);
}

void tst_UserData::childrenReadOrFail()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, reads);
    ExactBuffer buffer(bytes);
    UserDataAtom atom;
    QCOMPARE(atom.Read(*buffer), reads ? MovAtom::ERROR_OKAY : MovAtom::ERROR_ATOM_READ_FAILED);
    QCOMPARE(buffer->Tell(), reads ? uint64_t(bytes.size()) : 0);
}

// Records of another size are told from broken ones, and stay where the preamble ends. The code
// does not get past the list that holds them.
void tst_UserData::recordsOfAnotherSizeAreMalformed()
{
    const auto readsAsMalformed = [](auto atom, const Box &box) {
        ExactBuffer buffer(box.bytes());
        return atom.Read(*buffer) == MovAtom::ERROR_MALFORMED_ATOM && buffer->Tell() == 8;
    };
    QVERIFY(readsAsMalformed(TavroCameraTURIAtom(), Box("TURI").zeros(24)));
    QVERIFY(readsAsMalformed(TavroCameraTUSIAtom(), Box("TUSI").zeros(8)));
}

void tst_UserData::anEmptyFirmwareIsNone()
{
    ExactBuffer buffer(Box("udta").child(Box("FIRM")).bytes());
    UserDataAtom atom;
    const char *text = "";
    QCOMPARE(atom.Read(*buffer), MovAtom::ERROR_OKAY);
    QVERIFY(atom.firmware);
    QCOMPARE(atom.GetFirmware(&text), MovAtom::ERROR_OKAY);
    QVERIFY(!text);
}

void tst_UserData::settingsAreDecodedFromThePreamble()
{
    // 20 payload bytes: the first four words that are decoded are the size 28, the type, and the
    // first two of the payload.
    ExactBuffer buffer(
        Box("udta").child(Box("SETT").u32(0x1234567B).u32(0xCAFEBABE).zeros(12)).bytes());
    UserDataAtom atom;
    TavroCameraSettings fields;
    QCOMPARE(atom.Read(*buffer), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.GetSettingsFields(&fields), MovAtom::ERROR_OKAY);
    const std::array<uint8_t, 13> first = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 3, 0, 0}; // 00 00 00 1c
    const std::array<uint8_t, 11> second = {0, 2, 1, 0, 0, 3, 0, 4, 5, 1, 1}; // "SETT"
    QVERIFY(fields.first == first);
    QVERIFY(fields.second == second);
    QCOMPARE(fields.third, uint8_t(5)); // the fields before it leave 12 bits of the type
    QCOMPARE(fields.fourth, 0x67BCAFEBU);

    uint8_t *bytes = nullptr;
    uint32_t length = 0;
    QCOMPARE(atom.GetSettings(&bytes, &length), MovAtom::ERROR_OKAY);
    QCOMPARE(length, 20U);
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    QCOMPARE(word, 0x1234567BU);
    ExactBuffer out(QByteArray(int(atom.GetSize()), '\0'));
    QCOMPARE(atom.Write(*out), MovAtom::ERROR_OKAY);
    QVERIFY(out.bytes().contains(QByteArray::fromHex("7B563412 BEBAFECA"))); // each word reversed
}

void tst_UserData::tags()
{
    UserDataAtom atom;
    uint32_t value = 7;
    std::vector<uint32_t> times(100, 5);
    QCOMPARE(atom.SetTags(1, times.data()), MovAtom::ERROR_ATOM_NOT_FOUND);
    atom.tags.Ensure();
    QCOMPARE(atom.SetTags(0, times.data()), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(atom.SetTags(1, nullptr), MovAtom::ERROR_INVALID_ARG);
    const QList<QPair<int, uint32_t>> counts = {{3, 3}, {99, 99}, {100, 100}, {-1, 100}};
    for (const auto &[asked, kept] : counts) {
        QCOMPARE(atom.SetTags(asked, times.data()), MovAtom::ERROR_OKAY);
        QCOMPARE(atom.GetTagCount(&value), MovAtom::ERROR_OKAY);
        QCOMPARE(value, kept);
        QCOMPARE(atom.GetTag(kept - 1, &value), MovAtom::ERROR_OKAY);
        QCOMPARE(value, 5U);
        QCOMPARE(atom.GetTag(kept, &value), MovAtom::ERROR_OKAY); // one behind the last is 0
        QCOMPARE(value, 0U);
        QCOMPARE(atom.GetTag(kept + 1, &value), MovAtom::ERROR_INVALID_ARG);
    }
}

void tst_UserData::absentChildrenSaySo()
{
    UserDataAtom atom;
    uint8_t *bytes = reinterpret_cast<uint8_t *>(&atom);
    uint32_t length = 7;
    TavroRigIdentity identity;
    TavroRigShot shot;
    TavroCameraSettings fields;
    for (const auto get :
         {&UserDataAtom::GetCameraId, &UserDataAtom::GetLens, &UserDataAtom::GetFov,
          &UserDataAtom::GetMediaUniqueId, &UserDataAtom::GetSettings}) {
        QCOMPARE((atom.*get)(&bytes, &length), MovAtom::ERROR_OKAY);
        QVERIFY(!bytes);
        QCOMPARE(length, 0U);
    }
    QCOMPARE(atom.GetRigIdentity(&identity), MovAtom::ERROR_ATOM_NOT_FOUND);
    QCOMPARE(atom.GetRigShot(&shot), MovAtom::ERROR_ATOM_NOT_FOUND);
    QCOMPARE(atom.GetSettingsFields(&fields), MovAtom::ERROR_ATOM_NOT_FOUND);
    QCOMPARE(atom.GetSettingsFields(nullptr), MovAtom::ERROR_INVALID_ARG);
    atom.cameraId.Ensure(); // an identity without bytes cannot be written
    ExactBuffer out(QByteArray(int(atom.GetSize()), '\0'));
    QCOMPARE(atom.Write(*out), MovAtom::ERROR_ATOM_WRITE_FAILED);
}

void tst_UserData::unknownChildrenAreHandedOut()
{
    ExactBuffer buffer(
        Box("udta").child(Box("abcd").raw("one")).child(Box("abcd").raw("two")).bytes());
    UserDataAtom atom;
    uint8_t bytes[3];
    uint64_t size = 0;
    QCOMPARE(atom.Read(*buffer), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.GetUnparsedChild(FourCC("abcd"), nullptr, 0, &size), MovAtom::ERROR_OKAY);
    QCOMPARE(size, uint64_t(3));
    QCOMPARE(atom.GetUnparsedChild(FourCC("abcd"), bytes, 3, &size), MovAtom::ERROR_OKAY);
    QVERIFY(std::memcmp(bytes, "one", 3) == 0); // the first one stays
    QCOMPARE(atom.GetUnparsedChild(FourCC("abcd"), bytes, 2, &size), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(atom.GetUnparsedChild(FourCC("efgh"), bytes, 3, &size), MovAtom::ERROR_INVALID_ARG);
}

void tst_UserData::descriptionsReadOrFail_data()
{
    QTest::addColumn<uint>("kind");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("entries"); // -1 where reading fails
    const auto row = [](const char *name, uint32_t kind, uint32_t count, const Box &only,
                        int entries) {
        QTest::newRow(name) << kind << Box::full("stsd").u32(count).child(only).bytes() << entries;
    };
    const uint32_t video = FourCC("vide");
    row("a time code entry on a video track is read as video", video, 1, entry("tmcd", 70), 1);
    row("an entry that claims 0 bytes", video, 1, entry("avc1", 70).claims(0), 1);
    row("more entries than there is room for", video, 7, entry("avc1", 70), -1);
    row("entries of no size that repeat themselves", video, 5, entry("avc1", 70).claims(0), 5);
    row("a kind that nobody knows", FourCC("subt"), 1, entry("tx3g", 70), -1);
    row("a zero size ends the entry", video, 1, entry("avc1", 70).u32(0).raw("no atom"), 1);
    row("a colr that is one byte short", video, 1,
        entry("avc1", 70).child(Box("colr").raw("nclx").zeros(6)).u8(0), 1);
    row("an ICC profile in colr is taken for atoms", video, 1,
        entry("avc1", 70).child(Box("colr").raw("prof").raw(QByteArray(99, 'x'))), -1);
    row("several parameter sets", video, 1,
        entry("avc1", 70).child(Box("avcC").hex("014d0028ffe200016700026801010001ee")), 1);
    row("a text entry whose name runs past it", FourCC("text"), 1, entry("tx3g", 43).u8(200), 1);
}

void tst_UserData::descriptionsReadOrFail()
{
    QFETCH(uint, kind);
    QFETCH(QByteArray, bytes);
    QFETCH(int, entries);
    SampleDescriptionAtom atom;
    atom.mediaType = kind;
    ExactBuffer buffer(bytes);
    QCOMPARE(atom.Read(*buffer),
             entries < 0 ? MovAtom::ERROR_ATOM_READ_FAILED : MovAtom::ERROR_OKAY);
    if (entries >= 0)
        QCOMPARE(int(atom.entries.size()), entries);
}

void tst_UserData::descriptionsAnswerForTheirKindOnly()
{
    SampleDescriptionAtom atom;
    uint32_t width = 0;
    uint32_t height = 0;
    const AVCCAtom *avcc = nullptr;
    atom.mediaType = FourCC("vide");
    QCOMPARE(atom.GetFrameSize(&width, &height), MovAtom::ERROR_INVALID_RET_VAL);
    QCOMPARE(atom.AddVideoDescription(FourCC("avc1"), 0, 1), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(atom.AddVideoDescription(FourCC("avc1"), 4, 2), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.AddVideoDescription(FourCC("avc1"), 4, 2), MovAtom::ERROR_INVALID_OP);
    QCOMPARE(atom.AddSoundDescription(FourCC("mp4a"), 2, 48000), MovAtom::ERROR_INVALID_OP);
    QCOMPARE(atom.GetFrameSize(&width, &height), MovAtom::ERROR_OKAY);
    QCOMPARE(width * 10 + height, 42U);
    QCOMPARE(atom.GetAvcConfiguration(&avcc), MovAtom::ERROR_ATOM_NOT_FOUND);
    atom.mediaType = FourCC("soun");
    QCOMPARE(atom.GetAvcConfiguration(&avcc), MovAtom::ERROR_INVALID_RET_VAL);
    QVERIFY(!atom.Sound());
}

void tst_UserData::soundFormats()
{
    const struct
    {
        uint32_t format;
        int bits; // 0 where the format is refused
        int compressionId;
    } formats[] = {{FourCC("sowt"), 16, 0}, {FourCC("raw "), 16, 0}, {FourCC("s24l"), 24, 0},
                   {FourCC("fl32"), 32, 0}, {FourCC("fl64"), 64, 0}, {FourCC("mp4a"), 16, -2},
                   {FourCC("Opus"), 0, 0}};

    for (const auto &[format, bits, compressionId] : formats) {
        SampleDescriptionAtom atom;
        atom.mediaType = FourCC("soun");
        QCOMPARE(atom.AddSoundDescription(format, 4, 96000),
                 bits == 0 ? MovAtom::ERROR_INVALID_ARG : MovAtom::ERROR_OKAY);
        const SoundSampleDescription *sound = atom.Sound();
        QCOMPARE(sound != nullptr, bits != 0);
        if (!sound)
            continue;
        QCOMPARE(int(sound->bitsPerChannel), bits);
        QCOMPARE(int(sound->bytesPerFrame), bits / 8 * 4);
        QCOMPARE(int(sound->compressionId), compressionId);
        QCOMPARE(sound->audioSampleRate, 96000.0);
        QCOMPARE(bool(sound->esds), compressionId != 0);
        if (sound->esds)
            QCOMPARE(sound->esds->AudioSpecificConfig.samplingFrequencyIndex, uint8_t(0));
    }
}

void tst_UserData::theReaderHandsOutDescriptions()
{
    TestTrack video;
    video.descriptionChildren = {Box("pasp").words({4, 3}), Box("fiel").u8(2).u8(9)};
    video.children = {Box("tref").child(Box("tmcd").u32(9))};
    TestTrack sound{"soun"};
    sound.tables.append(
        Box::full("stsd").u32(1).child(entry("sowt", 8).shorts({2, 16, 0, 0}).u32(44100U << 16)));
    TestTrack timeCode{"tmcd", "Time code", 9};
    timeCode.tables.append(
        Box::full("stsd").u32(1).child(entry("tmcd", 0).words({0, 1, 30000, 1001}).u8(30).u8(0)));
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write(movieFile(movie({video, sound, timeCode}, {Box("udta").child(Box("CAME").u8(1))})));
    file.close();

    MovFileReader reader;
    uint32_t format = 0;
    const PixelAspectAtom *aspect = nullptr;
    const FieldsAtom *fields = nullptr;
    const ColorAtom *color = nullptr;
    const AVCCAtom *avcc = nullptr;
    const HVCCAtom *hvcc = nullptr;
    const EsdsAtom *esds = nullptr;
    const SoundSampleDescription *heard = nullptr;
    const TimeCodeSampleDescription *counted = nullptr;
    const UserDataAtom *userData = nullptr;
    QCOMPARE(reader.GetCodec(&format), 0x40002U); // nothing is open
    QCOMPARE(reader.GetUserData(&userData), 0x40003U);
    QCOMPARE(reader.Open(file.fileName()), 0U);
    QCOMPARE(reader.GetCodec(&format), 0U);
    QCOMPARE(format, FourCC("avc1"));
    QCOMPARE(reader.GetCodec(&format, {FourCC("soun"), 0}), 0U);
    QCOMPARE(format, FourCC("sowt"));
    QCOMPARE(reader.GetPixelAspect(&aspect), 0U);
    QCOMPARE(aspect->horizontalSpacing, 4U);
    QCOMPARE(reader.GetFields(&fields), 0U);
    QCOMPARE(int(fields->detail), 9);
    for (const uint32_t absent :
         {reader.GetColorParameters(&color), reader.GetAvcConfiguration(&avcc),
          reader.GetHevcConfiguration(&hvcc), reader.GetEsds(&esds)})
        QCOMPARE(absent, 0x40003U);
    QCOMPARE(reader.GetSoundDescription(&heard), 0U);
    QCOMPARE(heard->sampleRate >> 16, 44100U);
    QCOMPARE(reader.GetSoundDescription(&heard, 1), 0x40002U);
    uint32_t number = 0;
    int32_t id = 1;
    double rate = 0;
    QCOMPARE(reader.GetChannelCount(&number), 0U);
    QCOMPARE(number, 2U);
    QCOMPARE(reader.GetSampleBits(&number), 0U);
    QCOMPARE(number, 16U);
    QCOMPARE(reader.GetSampleRate(&rate), 0U);
    QCOMPARE(rate, 44100.0);
    QCOMPARE(reader.GetCompressionId(&id), 0U);
    QCOMPARE(id, 0);
    QCOMPARE(reader.GetBytesPerPacket(&number), 0U);
    QCOMPARE(number, 0U); // this version of the layout does not say
    QCOMPARE(reader.GetBytesPerPacket(&number, 1), 0x40002U);
    QCOMPARE(reader.GetTimeCodeDescription(&counted), 0U);
    QCOMPARE(int(counted->numberOfFrames), 30);
    QCOMPARE(reader.GetUserData(&userData), 0U);
    QVERIFY(userData->cameraId);
}

QTEST_APPLESS_MAIN(tst_UserData)
#include "tst_user_data.moc"
