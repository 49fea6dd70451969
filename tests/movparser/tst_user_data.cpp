// SPDX-License-Identifier: GPL-3.0-or-later
// Single atoms: what they do beyond the common contract.
#include "answer.h"
#include "columns.h"
#include "movie.h"
#include "movparser/src/atom_esds.h"
#include "movparser/src/atom_free.h"
#include "movparser/src/atom_mdat.h"
#include "movparser/src/atom_minf.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/time_code_sample_description.h"
#include "movparser/src/video_sample_description.h"

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
    void settingsAreDecodedFromThePreamble();
    void tags();
    void whatIsAbsentSaysSo();
    void descriptionsReadOrFail_data();
    void descriptionsReadOrFail();
    void descriptionsAnswerForTheirKindOnly();
    void soundFormats_data();
    void soundFormats();
    void theReaderHandsOutDescriptions();
    void sizesOfSpaceAreSetByTheirRules();
    void aPreambleInsistsOnItsType();
    void aNewTrackOfNeitherPicturesNorSoundHasItsHeader();
};

void tst_UserData::childrenReadOrFail_data()
{
    const auto row = columns<QByteArray, bool>("child", "reads");
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
    QFETCH(QByteArray, child);
    QFETCH(bool, reads);
    ExactBuffer buffer(Box("udta").raw(child));
    UserDataAtom atom;
    QCOMPARE(atom.Read(*buffer), reads ? MovAtom::ERROR_OKAY : MovAtom::ERROR_ATOM_READ_FAILED);
    QCOMPARE(buffer->Tell(), reads ? uint64_t(8 + child.size()) : 0);
}

void tst_UserData::settingsAreDecodedFromThePreamble()
{
    // 20 payload bytes: the first four words that are decoded are the size 28, the type, and the
    // first two of the payload.
    UserDataAtom atom;
    TavroCameraSettings fields;
    const Box settings = Box("SETT").words({0x1234567B, 0xCAFEBABE}).zeros(12);
    QCOMPARE(atom.Read(*ExactBuffer(Box("udta").child(settings))), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.GetSettingsFields(&fields), MovAtom::ERROR_OKAY);
    const std::array<uint8_t, 13> first = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 3, 0, 0}; // 00 00 00 1c
    const std::array<uint8_t, 11> second = {0, 2, 1, 0, 0, 3, 0, 4, 5, 1, 1}; // "SETT"
    QVERIFY(fields.first == first && fields.second == second);
    QCOMPARE(fields.third, uint8_t(5)); // the fields before it leave 12 bits of the type
    QCOMPARE(fields.fourth, 0x67BCAFEBU);

    uint8_t *bytes = nullptr;
    uint32_t length = 0;
    QCOMPARE(atom.GetSettings(&bytes, &length), MovAtom::ERROR_OKAY);
    QCOMPARE(length, 20U);
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    QCOMPARE(word, 0x1234567BU);
    QVERIFY(written(atom).contains(QByteArray::fromHex("7B563412 BEBAFECA"))); // each word reversed
}

void tst_UserData::tags()
{
    UserDataAtom atom;
    uint32_t value = 7;
    const std::vector<uint32_t> times(100, 5);
    QCOMPARE(atom.SetTags(1, times.data()), MovAtom::ERROR_ATOM_NOT_FOUND);
    atom.tags.Ensure();
    QCOMPARE(atom.SetTags(0, times.data()), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(atom.SetTags(1, nullptr), MovAtom::ERROR_INVALID_ARG);
    for (const auto &[asked, kept] : {std::pair(3, 3u), {99, 99u}, {100, 100u}, {-1, 100u}}) {
        QCOMPARE(atom.SetTags(asked, times.data()), MovAtom::ERROR_OKAY);
        QVERIFY(atom.GetTagCount(&value) == MovAtom::ERROR_OKAY && value == kept);
        QVERIFY(atom.GetTag(kept - 1, &value) == MovAtom::ERROR_OKAY && value == 5);
        // One behind the last is 0.
        QVERIFY(atom.GetTag(kept, &value) == MovAtom::ERROR_OKAY && value == 0);
        QCOMPARE(atom.GetTag(kept + 1, &value), MovAtom::ERROR_INVALID_ARG);
    }
}

void tst_UserData::whatIsAbsentSaysSo()
{
    UserDataAtom atom;
    uint8_t *bytes = reinterpret_cast<uint8_t *>(&atom);
    uint32_t length = 7;
    TavroRigIdentity identity;
    TavroRigShot shot;
    QVERIFY(atom.GetLens(&bytes, &length) == MovAtom::ERROR_OKAY && !bytes && length == 0);
    QVERIFY(atom.GetSettings(&bytes, &length) == MovAtom::ERROR_OKAY && !bytes && length == 0);
    QCOMPARE(atom.GetRigIdentity(&identity), MovAtom::ERROR_ATOM_NOT_FOUND);
    QCOMPARE(atom.GetRigShot(&shot), MovAtom::ERROR_ATOM_NOT_FOUND);
    atom.cameraId.Ensure(); // an identity without bytes cannot be written
    QVERIFY(written(atom).isEmpty());

    const Box both = Box("udta").child(Box("abcd").raw("one")).child(Box("abcd").raw("two"));
    uint8_t first[3];
    uint64_t size = 0;
    QCOMPARE(atom.Read(*ExactBuffer(both)), MovAtom::ERROR_OKAY);
    QCOMPARE(atom.GetUnparsedChild(FourCC("abcd"), first, 3, &size), MovAtom::ERROR_OKAY);
    QVERIFY(std::memcmp(first, "one", 3) == 0); // the first one stays
    QCOMPARE(atom.GetUnparsedChild(FourCC("efgh"), first, 3, &size), MovAtom::ERROR_INVALID_ARG);
}

void tst_UserData::descriptionsReadOrFail_data()
{
    // Entries: -1 where reading fails.
    const auto row = columns<uint, uint, QByteArray, int>("kind", "count", "only", "entries");
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
    QFETCH(uint, count);
    QFETCH(QByteArray, only);
    QFETCH(int, entries);
    SampleDescriptionAtom atom;
    atom.mediaType = kind;
    ExactBuffer buffer(Box::full("stsd").u32(count).raw(only));
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

void tst_UserData::soundFormats_data()
{
    // Bits: 0 where the format is refused.
    const auto row = columns<uint, int, int>("format", "bits", "compressionId");
    row("sowt", FourCC("sowt"), 16, 0);
    row("raw ", FourCC("raw "), 16, 0);
    row("s24l", FourCC("s24l"), 24, 0);
    row("fl32", FourCC("fl32"), 32, 0);
    row("fl64", FourCC("fl64"), 64, 0);
    row("mp4a", FourCC("mp4a"), 16, -2);
    row("Opus", FourCC("Opus"), 0, 0);
}

void tst_UserData::soundFormats()
{
    QFETCH(uint, format);
    QFETCH(int, bits);
    QFETCH(int, compressionId);
    SampleDescriptionAtom atom;
    atom.mediaType = FourCC("soun");
    QCOMPARE(atom.AddSoundDescription(format, 4, 96000),
             bits == 0 ? MovAtom::ERROR_INVALID_ARG : MovAtom::ERROR_OKAY);
    const SoundSampleDescription *sound = atom.Sound();
    QCOMPARE(sound != nullptr, bits != 0);
    if (!sound)
        return;
    QCOMPARE(int(sound->bitsPerChannel), bits);
    QCOMPARE(int(sound->bytesPerFrame), bits / 8 * 4);
    QCOMPARE(int(sound->compressionId), compressionId);
    QCOMPARE(sound->audioSampleRate, 96000.0);
    QCOMPARE(bool(sound->esds), compressionId != 0);
    QVERIFY(!sound->esds || sound->esds->AudioSpecificConfig.samplingFrequencyIndex == 0);
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
    const Box userData = Box("udta").child(Box("CAME").u8(1));
    MovFileReader reader;
    QCOMPARE(answer(reader, &MovFileReader::GetCodec, TrackRef()), "0x40002"); // nothing is open
    QCOMPARE(reader.Open(FileOf(movieFile(movie({video, sound, timeCode}, {userData})))), 0U);
    const TrackRef first;
    const TrackRef heardTrack = {FourCC("soun"), 0};
    QCOMPARE(answer(reader, &MovFileReader::GetCodec, first), QString::number(FourCC("avc1")));
    QCOMPARE(answer(reader, &MovFileReader::GetCodec, heardTrack), QString::number(FourCC("sowt")));
    QCOMPARE(answer(reader, &MovFileReader::GetChannelCount, 0U), "2");
    QCOMPARE(answer(reader, &MovFileReader::GetSampleBits, 0U), "16");
    QCOMPARE(answer(reader, &MovFileReader::GetSampleRate, 0U), "44100");
    QCOMPARE(answer(reader, &MovFileReader::GetCompressionId, 0U), "0");
    // This version of the layout does not say.
    QCOMPARE(answer(reader, &MovFileReader::GetBytesPerPacket, 0U), "0");
    QCOMPARE(answer(reader, &MovFileReader::GetBytesPerPacket, 1U), "0x40002");

    const PixelAspectAtom *aspect = nullptr;
    const FieldsAtom *fields = nullptr;
    const ColorAtom *color = nullptr;
    const AVCCAtom *avcc = nullptr;
    const HVCCAtom *hvcc = nullptr;
    const TimeCodeSampleDescription *counted = nullptr;
    const UserDataAtom *said = nullptr;
    QVERIFY(reader.GetPixelAspect(&aspect) == 0 && aspect->horizontalSpacing == 4);
    QVERIFY(reader.GetFields(&fields) == 0 && fields->detail == 9);
    QVERIFY(reader.GetTimeCodeDescription(&counted) == 0 && counted->numberOfFrames == 30);
    QVERIFY(reader.GetUserData(&said) == 0 && said->cameraId);
    for (const uint32_t absent :
         {reader.GetColorParameters(&color), reader.GetAvcConfiguration(&avcc),
          reader.GetHevcConfiguration(&hvcc), MovFileReader().GetUserData(&said)})
        QCOMPARE(absent, 0x40003U);
}

void tst_UserData::sizesOfSpaceAreSetByTheirRules()
{
    constexpr uint64_t kPast32Bits = uint64_t{1} << 32;
    QCOMPARE(FreeAtom(8).freePayloadSize, uint64_t(0));
    QCOMPARE(FreeAtom(kPast32Bits).freePayloadSize, kPast32Bits - 16);
    FreeAtom space(20);
    QCOMPARE(space.SetSize(8), MovAtom::ERROR_INVALID_ARG);
    QCOMPARE(space.freePayloadSize, uint64_t(12));
    QCOMPARE(space.SetSize(9), MovAtom::ERROR_OKAY);
    QCOMPARE(space.freePayloadSize, uint64_t(1));

    // What counts is the size that it has and not the one that it is to get.
    MdatAtomPrefix empty(8);
    MdatAtomPrefix media(9);
    QVERIFY(empty.SetSize(100) == MovAtom::ERROR_INVALID_ARG && empty.GetSize() == 8);
    QVERIFY(media.SetSize(3) == MovAtom::ERROR_OKAY && media.GetSize() == 3);
}

void tst_UserData::aPreambleInsistsOnItsType()
{
    ExactBuffer buffer(Box("abcd").wide());
    MovAtom atom;
    QCOMPARE(atom.Read(*buffer, FourCC("abce")), MovAtom::ERROR_WRONG_ATOM_TYPE);
    QCOMPARE(buffer->Tell(), uint64_t(0));
    QCOMPARE(atom.Read(*buffer, FourCC("abcd")), MovAtom::ERROR_OKAY);
    QCOMPARE(buffer->Tell(), uint64_t(16));
    ExactBuffer zero(Box("abcd").claims(0)); // refused only where any type will do
    QCOMPARE(atom.Read(*zero), MovAtom::ERROR_ZERO_SIZE_ATOM);
    QCOMPARE(atom.Read(*zero, FourCC("abcd")), MovAtom::ERROR_OKAY);
}

void tst_UserData::aNewTrackOfNeitherPicturesNorSoundHasItsHeader()
{
    const auto information = MakeMediaInformation(FourCC("tmcd"));
    QCOMPARE(information->CreateSampleTable(), MovAtom::ERROR_OKAY);
    const auto *base = dynamic_cast<const BaseMediaInformationAtom *>(information.get());
    QVERIFY(base && base->header && base->header->mediaInfo);
}

QTEST_APPLESS_MAIN(tst_UserData)
#include "tst_user_data.moc"
