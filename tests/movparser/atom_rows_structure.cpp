// SPDX-License-Identifier: GPL-3.0-or-later
#include "atom_rows.h"
#include "movparser/src/atom_free.h"
#include "movparser/src/atom_ftyp.h"
#include "movparser/src/atom_mdat.h"
#include "movparser/src/atom_moov.h"
#include "movparser/src/atom_wide.h"

using namespace Tavro::MovParserLib;

namespace {

constexpr int kSearch = AtomRow::SearchesChildren;

void fillDates(MovFullDatedAtom &atom)
{
    atom.version = 1; // the layout stays the one with 32 bits
    atom.flags = {0, 0, 7};
    atom.creationTime = 0xD0000001;
    atom.modificationTime = 0xD0000002;
}

Box dated(const char *type)
{
    return Box::full(type, 1, 7).u32(0xD0000001).u32(0xD0000002);
}

constexpr TransformMatrix kMatrix = {1, 2, 3, 4, 5, 6, 7, 8, 9};

Box withMatrix(Box box)
{
    for (int i = 1; i <= 9; ++i)
        box = std::move(box).u32(uint64_t(i));
    return box;
}

void fillTrackHeader(TrackHeaderAtom &atom)
{
    fillDates(atom);
    atom.trackId = 3;
    atom.reserved1 = 4;
    atom.duration = 5;
    atom.reserved2 = 0x600000007;
    atom.layer = 8;
    atom.alternateGroup = 9;
    atom.volume = 10;
    atom.reserved3 = 11;
    atom.matrix = kMatrix;
    atom.width = 0x07800000;
    atom.height = 0x03C00001;
}

Box trackHeader()
{
    return withMatrix(
               dated("tkhd").u32(3).u32(4).u32(5).u64(0x600000007).u16(8).u16(9).u16(10).u16(11))
        .u32(0x07800000)
        .u32(0x03C00001);
}

void fillMediaHeader(MediaHeaderAtom &atom)
{
    fillDates(atom);
    atom.timeScale = 30000;
    atom.duration = 1001;
    atom.language = 0x55C4;
    atom.quality = 2;
}

Box mediaHeader()
{
    return dated("mdhd").u32(30000).u32(1001).u16(0x55C4).u16(2);
}

Box handler(const char *subtype, const QByteArray &name)
{
    return Box::full("hdlr").u32(0).raw(subtype).zeros(12).raw(name);
}

// The least that a track must have.
void fillTrack(TrackAtom &atom)
{
    fillTrackHeader(atom.header);
    fillMediaHeader(atom.media.header);
}

Box track()
{
    return Box("trak").child(trackHeader()).child(Box("mdia").child(mediaHeader()));
}

void addHeaderRows(AtomRows *rows)
{
    addRow<MovieHeaderAtom>(
        rows, "mvhd",
        [](MovieHeaderAtom &atom) {
            fillDates(atom);
            atom.timeScale = 1000;
            atom.duration = 60000;
            atom.preferredRate = 0x18000;
            atom.preferredVolume = 0x80;
            atom.reserved = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
            atom.matrix = kMatrix;
            atom.previewTime = 11;
            atom.previewDuration = 12;
            atom.posterTime = 13;
            atom.selectionTime = 14;
            atom.selectionDuration = 15;
            atom.currentTime = 16;
            atom.nextTrackId = 17;
        },
        withMatrix(dated("mvhd").u32(1000).u32(60000).u32(0x18000).u16(0x80).raw(
                       "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A"))
            .u32(11)
            .u32(12)
            .u32(13)
            .u32(14)
            .u32(15)
            .u32(16)
            .u32(17));
    addRow<TrackHeaderAtom>(rows, "tkhd", fillTrackHeader, trackHeader());
    addRow<MediaHeaderAtom>(rows, "mdhd", fillMediaHeader, mediaHeader());
    addRow<VideoMediaInformationHeaderAtom>(
        rows, "vmhd",
        [](VideoMediaInformationHeaderAtom &atom) {
            atom.graphicsMode = 0x40;
            atom.opColor = {1, 2, 3};
        },
        Box::full("vmhd").u16(0x40).u16(1).u16(2).u16(3));
    addRow<SoundMediaInformationHeaderAtom>(
        rows, "smhd",
        [](SoundMediaInformationHeaderAtom &atom) {
            atom.balance = 0xFF00;
            atom.reserved = 9;
        },
        Box::full("smhd").u16(0xFF00).u16(9));
    addRow<BaseMediaInfoAtom>(
        rows, "gmin",
        [](BaseMediaInfoAtom &atom) {
            atom.graphicsMode = 0x40;
            atom.opColor = {1, 2, 3};
            atom.balance = 4;
            atom.reserved = 5;
        },
        Box::full("gmin").u16(0x40).u16(1).u16(2).u16(3).u16(4).u16(5));
    addRow<TimeCodeMediaInformationAtom>(
        rows, "tcmi",
        [](TimeCodeMediaInformationAtom &atom) {
            atom.textFont = 1;
            atom.textFace = 2;
            atom.textSize = 12;
            atom.reserved = 3;
            atom.textColor = {4, 5, 6};
            atom.backgroundColor = {7, 8, 9};
            atom.name = "Sans";
        },
        Box::full("tcmi")
            .u16(1)
            .u16(2)
            .u16(12)
            .u16(3)
            .u16(4)
            .u16(5)
            .u16(6)
            .u16(7)
            .u16(8)
            .u16(9)
            .u8(4)
            .raw("Sans"));
    addRow<HandlerReferenceAtom>(
        rows, "hdlr with a counted name",
        [](HandlerReferenceAtom &atom) {
            atom.componentManufacturer = FourCC("appl");
            atom.componentFlags = 1;
            atom.componentFlagsMask = 2;
            atom.componentType = HandlerReferenceAtom::kMediaHandler;
            atom.componentSubtype = FourCC("vide");
            atom.hasCountedName = true;
            atom.SetName("Video");
        },
        Box::full("hdlr").raw("mhlrvideappl").u32(1).u32(2).u8(5).raw("Video"), AtomRow::FillsAtom);
    addRow<HandlerReferenceAtom>(
        rows, "hdlr with a text",
        [](HandlerReferenceAtom &atom) { atom = HandlerReferenceAtom(0, FourCC("soun"), "Sound"); },
        handler("soun", QByteArray("Sound\0", 6)), AtomRow::FillsAtom);
    addRow<HandlerReferenceAtom>(
        rows, "hdlr with a name of 300 bytes",
        [](HandlerReferenceAtom &atom) {
            atom = HandlerReferenceAtom(0, FourCC("soun"), std::string(299, 'n'));
        },
        handler("soun", QByteArray(299, 'n').append('\0')), AtomRow::FillsAtom);
}

void addLeafRows(AtomRows *rows)
{
    addRow<FreeAtom>(
        rows, "free", [](FreeAtom &atom) { atom.freePayloadSize = 300; }, Box("free").zeros(300),
        AtomRow::PreambleOnly | AtomRow::AnyType);
    addRow<WideAtom>(
        rows, "wide", [](WideAtom &) {}, Box("wide"));
    addRow<MdatAtomPrefix>(
        rows, "mdat", [](MdatAtomPrefix &atom) { atom = MdatAtomPrefix(8); }, Box("mdat"),
        AtomRow::PreambleOnly);
    addRow<FtypAtom>(
        rows, "ftyp",
        [](FtypAtom &atom) {
            atom.majorBrand = FourCC("mp42");
            atom.minorVersion = 9;
            atom.compatibleBrands = {FourCC("mp42"), FourCC("isom"), 0, 1};
        },
        Box("ftyp").raw("mp42").u32(9).raw("mp42isom").u32(0).u32(1), AtomRow::PreambleOnly);
    addRow<EditListAtom>(
        rows, "elst",
        [](EditListAtom &atom) {
            atom.entries = {{10, -1, 0x10000}, {20, 30, 0x8000}};
        },
        Box::full("elst").u32(2).u32(10).u32(0xFFFFFFFF).u32(0x10000).u32(20).u32(30).u32(0x8000));
    addRow<DataReferenceAtom>(
        rows, "dref with a payload",
        [](DataReferenceAtom &atom) {
            atom.entries.resize(2);
            atom.entries[0].type = FourCC("url ");
            atom.entries[0].flags = {0, 0, 1};
            atom.entries[1].type = FourCC("alis");
            atom.entries[1].data = {1, 2, 3};
        },
        Box::full("dref")
            .u32(2)
            .child(Box::full("url ", 0, 1))
            .child(Box::full("alis").raw("\x01\x02\x03")));
    addRow<DataReference>(
        rows, "an entry of dref",
        [](DataReference &atom) {
            atom.type = FourCC("url ");
            atom.flags = {0, 0, 1};
            atom.data = {1, 2, 3};
        },
        Box::full("url ", 0, 1).raw("\x01\x02\x03"), AtomRow::FillsAtom | AtomRow::AnyType);
    addRow<TrackReferenceTypeAtom>(
        rows, "a kind of track reference",
        [](TrackReferenceTypeAtom &atom) {
            atom = TrackReferenceTypeAtom(FourCC("tmcd"), {2, 3});
        },
        Box("tmcd").u32(2).u32(3), AtomRow::FillsAtom | AtomRow::AnyType);
    addRow<UnparsedAtom>(
        rows, "an atom that nobody models",
        [](UnparsedAtom &atom) {
            ExactBuffer bytes(Box("abcd").raw("payload").bytes());
            if (atom.Read(*bytes) != MovAtom::ERROR_OKAY)
                qFatal("the atom to start from cannot be read");
        },
        Box("abcd").raw("payload"), AtomRow::FillsAtom | AtomRow::AnyType);
}

void addContainerRows(AtomRows *rows)
{
    addRow<TrackReferenceAtom>(
        rows, "tref",
        [](TrackReferenceAtom &atom) {
            atom.references = {{FourCC("tmcd"), {2}}, {FourCC("chap"), {3, 4}}};
        },
        Box("tref").child(Box("tmcd").u32(2)).child(Box("chap").u32(3).u32(4)));
    addRow<EditAtom>(
        rows, "edts",
        [](EditAtom &atom) {
            atom.editList.Ensure().entries = {{10, 5, 0x10000}};
        },
        Box("edts").child(Box::full("elst").u32(1).u32(10).u32(5).u32(0x10000)), kSearch);
    addRow<DataInformationAtom>(
        rows, "dinf", [](DataInformationAtom &atom) { atom.dataReference.Ensure(); },
        Box("dinf").child(Box::full("dref").u32(0)), kSearch);
    addRow<TimeCodeMediaHandlerAtom>(
        rows, "tmcd", [](TimeCodeMediaHandlerAtom &atom) { atom.mediaInformation.Ensure(); },
        Box("tmcd").child(Box::full("tcmi").zeros(21)), kSearch);
    addRow<BaseMediaInformationHeaderAtom>(
        rows, "gmhd of a timecode track",
        [](BaseMediaInformationHeaderAtom &atom) {
            atom.mediaInfo.Ensure();
            atom.timeCodeHandler.Ensure();
        },
        Box("gmhd").child(Box::full("gmin").zeros(12)).child(Box("tmcd")), kSearch);
    addRow<VideoMediaInformationAtom>(
        rows, "minf of video",
        [](VideoMediaInformationAtom &atom) {
            atom.header.Ensure();
            atom.dataHandler = std::make_unique<HandlerReferenceAtom>(
                HandlerReferenceAtom::kDataHandler, HandlerReferenceAtom::kAliasSubtype, "");
            atom.dataInformation.Ensure();
        },
        Box("minf")
            .child(Box::full("vmhd").zeros(8))
            .child(Box::full("hdlr").raw("dhlralis").zeros(12).u8(0))
            .child(Box("dinf")),
        kSearch);
    addRow<SoundMediaInformationAtom>(
        rows, "minf of sound", [](SoundMediaInformationAtom &atom) { atom.header.Ensure(); },
        Box("minf").child(Box::full("smhd").zeros(4)), kSearch);
    addRow<BaseMediaInformationAtom>(
        rows, "minf of metadata", [](BaseMediaInformationAtom &atom) { atom.header.Ensure(); },
        Box("minf").child(Box("gmhd")), kSearch);
    addRow<MediaAtom>(
        rows, "mdia with a handler that has no samples here",
        [](MediaAtom &atom) {
            fillMediaHeader(atom.header);
            atom.handler = std::make_unique<HandlerReferenceAtom>(0u, FourCC("subt"), "Subtitles");
        },
        Box("mdia").child(mediaHeader()).child(handler("subt", QByteArray("Subtitles\0", 10))),
        kSearch);
    addRow<MediaAtom>(
        rows, "mdia of video",
        [](MediaAtom &atom) {
            fillMediaHeader(atom.header);
            atom.handler = std::make_unique<HandlerReferenceAtom>(0u, FourCC("vide"), "V");
            atom.information = MakeMediaInformation(FourCC("vide"));
        },
        Box("mdia")
            .child(mediaHeader())
            .child(handler("vide", QByteArray("V\0", 2)))
            .child(Box("minf")),
        kSearch);
    addRow<TrackAtom>(
        rows, "trak",
        [](TrackAtom &atom) {
            fillTrack(atom);
            atom.edits.Ensure();
            atom.references.Ensure();
        },
        Box("trak")
            .child(trackHeader())
            .child(Box("edts"))
            .child(Box("mdia").child(mediaHeader()))
            .child(Box("tref")),
        kSearch);
    addRow<MovieAtom>(
        rows, "moov with two tracks and unknown children",
        [](MovieAtom &atom) {
            fillDates(atom.header);
            atom.tracks.resize(2);
            fillTrack(atom.tracks[0]);
            fillTrack(atom.tracks[1]);
            UnparsedAtom unknown;
            unknown.type = FourCC("mvex");
            atom.unparsed.emplace(unknown.type, unknown);
            unknown.type = FourCC("abcd");
            atom.unparsed.emplace(unknown.type, unknown);
        },
        Box("moov")
            .child(dated("mvhd")
                       .u32(600)
                       .u32(0)
                       .u32(0x10000)
                       .u16(0x100)
                       .zeros(10)
                       .u32(0x10000)
                       .zeros(12)
                       .u32(0x10000)
                       .zeros(12)
                       .u32(0x40000000)
                       .zeros(24)
                       .u32(1))
            .child(track())
            .child(track())
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
