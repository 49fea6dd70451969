// SPDX-License-Identifier: GPL-3.0-or-later
#include "atom_rows.h"
#include "movparser/src/atom_free.h"
#include "movparser/src/atom_ftyp.h"
#include "movparser/src/atom_mdat.h"
#include "movparser/src/atom_moov.h"
#include "movparser/src/atom_wide.h"

using namespace Tavro::MovParserLib;

namespace {

// Of version 1, whose layout stays the one with 32 bits.
Box dated(const char *type)
{
    return Box::full(type, 1, 7).words({0xD0000001, 0xD0000002});
}

const Box kTrackHeader = dated("tkhd")
                             .words({3, 4, 5, 6, 7})
                             .shorts({8, 9, 10, 11})
                             .words({1, 2, 3, 4, 5, 6, 7, 8, 9, 0x07800000, 0x03C00001});
const Box kMediaHeader = dated("mdhd").words({30000, 1001}).shorts({0x55C4, 2});
const Box kTrack = Box("trak").child(kTrackHeader).child(Box("mdia").child(kMediaHeader));
const Box kVideoHeader = Box::full("vmhd").shorts({0x40, 1, 2, 3});
const Box kSoundHeader = Box::full("smhd").shorts({0xFF00, 9});
const Box kOtherHeader = Box::full("gmin").shorts({0x40, 1, 2, 3, 4, 5});
const Box kTimeCodeFont =
    Box::full("tcmi").shorts({1, 2, 12, 3, 4, 5, 6, 7, 8, 9}).u8(4).raw("Sans");
const Box kEdits = Box::full("elst").words({2, 10, 0xFFFFFFFF, 0x10000, 20, 30, 0x8000});
const Box kReferences =
    Box::full("dref").u32(2).child(Box::full("url ", 0, 1)).child(Box::full("alis").hex("010203"));

Box handler(const char *subtype, const QByteArray &name)
{
    return Box::full("hdlr").u32(0).raw(subtype).zeros(12).raw(name).u8(0);
}

void addHeaderRows(AtomRows *rows)
{
    rows->add<MovieHeaderAtom>("mvhd",
                               dated("mvhd")
                                   .words({1000, 60000, 0x18000})
                                   .hex("0080 0102030405060708090A")
                                   .words({1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17}));
    rows->add<TrackHeaderAtom>("tkhd", kTrackHeader);
    rows->add<MediaHeaderAtom>("mdhd", kMediaHeader);
    rows->add<VideoMediaInformationHeaderAtom>("vmhd", kVideoHeader);
    rows->add<SoundMediaInformationHeaderAtom>("smhd", kSoundHeader);
    rows->add<BaseMediaInfoAtom>("gmin", kOtherHeader);
    rows->add<TimeCodeMediaInformationAtom>("tcmi", kTimeCodeFont);
    rows->add<HandlerReferenceAtom>(
        "hdlr with a counted name",
        Box::full("hdlr").raw("mhlrvideappl").words({1, 2}).u8(5).raw("Video"), AtomRow::FillsAtom);
    rows->addMade<HandlerReferenceAtom>(
        "hdlr with a counted name of 256 bytes, which is cut",
        [](HandlerReferenceAtom &atom) {
            atom = HandlerReferenceAtom(FourCC("mhlr"), FourCC("vide"), std::string(256, 'n'));
        },
        Box::full("hdlr").raw("mhlrvide").zeros(12).u8(254).raw(QByteArray(254, 'n')),
        AtomRow::FillsAtom);
    rows->add<HandlerReferenceAtom>(
        "hdlr with 256 bytes that begin like a counted name",
        Box::full("hdlr").raw("mhlrvide").zeros(12).u8(255).raw(QByteArray(255, 'n')),
        AtomRow::FillsAtom);
    rows->addMade<HandlerReferenceAtom>(
        "hdlr with a name of 300 bytes",
        [](HandlerReferenceAtom &atom) {
            atom = HandlerReferenceAtom(0, FourCC("soun"), std::string(299, 'n'));
        },
        handler("soun", QByteArray(299, 'n')), AtomRow::FillsAtom);
}

void addLeafRows(AtomRows *rows)
{
    rows->addMade<FreeAtom>(
        "free", [](FreeAtom &atom) { atom.freePayloadSize = 300; }, Box("free").zeros(300),
        AtomRow::PreambleOnly | AtomRow::AnyType);
    rows->add<WideAtom>("wide", Box("wide"));
    rows->addMade<MdatAtomPrefix>(
        "mdat", [](MdatAtomPrefix &atom) { atom = MdatAtomPrefix(8); }, Box("mdat"),
        AtomRow::PreambleOnly);
    rows->addMade<FtypAtom>(
        "ftyp",
        [](FtypAtom &atom) {
            atom.majorBrand = FourCC("mp42");
            atom.minorVersion = 9;
            atom.compatibleBrands = {FourCC("mp42"), FourCC("isom"), 0, 1};
        },
        Box("ftyp").raw("mp42").u32(9).raw("mp42isom").words({0, 1}), AtomRow::PreambleOnly);
    rows->add<EditListAtom>("elst", kEdits);
    rows->add<DataReferenceAtom>("dref with a payload", kReferences);
    rows->add<DataReference>("an entry of dref", Box::full("url ", 0, 1).hex("010203"),
                             AtomRow::FillsAtom | AtomRow::AnyType);
    rows->add<TrackReferenceTypeAtom>("a kind of track reference", Box("tmcd").words({2, 3}),
                                      AtomRow::FillsAtom | AtomRow::AnyType);
    rows->add<UnparsedAtom>("an atom that nobody models", Box("abcd").raw("payload"),
                            AtomRow::FillsAtom | AtomRow::AnyType);
}

void addContainerRows(AtomRows *rows)
{
    constexpr int kSearch = AtomRow::SearchesChildren;
    rows->add<TrackReferenceAtom>(
        "tref", Box("tref").child(Box("tmcd").u32(2)).child(Box("chap").words({3, 4})));
    rows->add<EditAtom>("edts", Box("edts").child(kEdits), kSearch);
    rows->add<DataInformationAtom>("dinf", Box("dinf").child(Box::full("dref").u32(0)), kSearch);
    rows->add<TimeCodeMediaHandlerAtom>("tmcd", Box("tmcd").child(kTimeCodeFont), kSearch);
    rows->add<BaseMediaInformationHeaderAtom>(
        "gmhd of a timecode track", Box("gmhd").child(kOtherHeader).child(Box("tmcd")), kSearch);
    rows->add<VideoMediaInformationAtom>("minf of video",
                                         Box("minf")
                                             .child(Box::full("vmhd").zeros(8))
                                             .child(Box::full("hdlr").raw("dhlralis").zeros(13))
                                             .child(Box("dinf")),
                                         kSearch);
    rows->add<SoundMediaInformationAtom>("minf of sound", Box("minf").child(kSoundHeader), kSearch);
    rows->add<BaseMediaInformationAtom>("minf of metadata", Box("minf").child(Box("gmhd")),
                                        kSearch);
    rows->add<MediaAtom>("mdia with a handler that has no samples here",
                         Box("mdia").child(kMediaHeader).child(handler("subt", "Subtitles")),
                         kSearch);
    rows->add<MediaAtom>(
        "mdia of video",
        Box("mdia").child(kMediaHeader).child(handler("vide", "V")).child(Box("minf")), kSearch);
    rows->add<TrackAtom>("trak",
                         Box("trak")
                             .child(kTrackHeader)
                             .child(Box("edts"))
                             .child(Box("mdia").child(kMediaHeader))
                             .child(Box("tref")),
                         kSearch);
    rows->addMade<MovieAtom>(
        "moov with two tracks and unknown children",
        [](MovieAtom &atom) {
            readInto(atom,
                     Box("moov").child(Box("mvex")).child(Box("abcd")).child(kTrack).child(kTrack));
            atom.header.creationTime = 0xD0000001;
            atom.header.modificationTime = 0xD0000002;
        },
        Box("moov")
            .child(Box::full("mvhd")
                       .words({0xD0000001, 0xD0000002, 600, 0, 0x10000})
                       .hex("0100 00000000000000000000")
                       .words({0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000})
                       .words({0, 0, 0, 0, 0, 0, 1}))
            .child(kTrack)
            .child(kTrack)
            .child(Box("abcd"))
            .child(Box("mvex")));
}

} // namespace

void addStructureRows(AtomRows *rows)
{
    addHeaderRows(rows);
    addLeafRows(rows);
    addContainerRows(rows);
}
