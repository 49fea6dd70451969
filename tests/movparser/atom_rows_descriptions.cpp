// SPDX-License-Identifier: GPL-3.0-or-later
#include "atom_rows.h"
#include "movparser/src/atom_name.h"
#include "movparser/src/atom_stsd.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/video_sample_description.h"

using namespace Tavro::MovParserLib;

namespace {

const Box kAvcc = Box("avcC").hex("0164002affe1000367010201000268ce");
const Box kHvcc =
    Box("hvcC").hex("016160000000b0010203040599f123fefdfafb18a0ac02a000010002aabb21000200000001cc");
const Box kEsds = Box::full("esds").hex(
    "038080802200070004808080144015002000 0003e80000000000058080800211b0068080800102");
const Box kTimeCode = Box("tmcd").zeros(6).u16(1).words({0, 1, 30000, 1001}).u8(30).u8(0);
const Box kText = Box("text")
                      .zeros(6)
                      .u16(1)
                      .words({1, 2})
                      .shorts({3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 0, 10, 11})
                      .zeros(3)
                      .shorts({12, 13, 14});

/// A table whose kind its owner has set.
template <uint32_t kind> struct TableOf : SampleDescriptionAtom
{
    TableOf() { mediaType = kind; }

    using SampleDescriptionAtom::operator=;
};

Box table(const Box &onlyEntry)
{
    return Box::full("stsd").u32(1).child(onlyEntry);
}

void addLeafRows(AtomRows *rows)
{
    constexpr int kStops = AtomRow::StopsBehindFields;
    rows->add<PixelAspectAtom>("pasp", Box("pasp").words({4, 3}), kStops);
    rows->add<ColorAtom>("colr nclc", Box("colr").raw("nclc").shorts({9, 16, 8}), kStops);
    rows->add<ColorAtom>("colr nclx with one byte more",
                         Box("colr").raw("nclx").shorts({1, 1, 1}).u8(0x80), kStops);
    rows->add<FieldsAtom>("fiel", Box("fiel").u8(2).u8(9), kStops);
    rows->add<AVCCAtom>("avcC", kAvcc);
    rows->add<HVCCAtom>("hvcC", kHvcc);
    rows->add<EsdsAtom>("esds", kEsds);
    rows->addMade<EsdsAtom>(
        "esds with a rate in clear and every optional field",
        [](EsdsAtom &atom) {
            atom.ES_Descriptor.streamDependenceFlag = true;
            atom.ES_Descriptor.dependsOnEsId = 1;
            atom.ES_Descriptor.URLFlag = true;
            atom.ES_Descriptor.URLString = {'u'};
            atom.ES_Descriptor.oCRstreamFlag = true;
            atom.ES_Descriptor.oCREsId = 2;
            atom.ES_Descriptor.streamPriority = 3;
            atom.decoderConfigDescriptor.upStream = true;
            atom.SetAudio(12345, 2);
        },
        Box::full("esds").hex("038080802b0000e3000101750002 04808080174017002000"
                              "0003e8000000000005808080051780181c90068080800102"));
    rows->addMade<EsdsAtom>(
        "esds whose channels are told elsewhere", [](EsdsAtom &atom) { atom.SetAudio(48000, 9); },
        Box::full("esds").hex("0380808022000000 04808080144015002000"
                              "0003e80000000000058080800211800680808001 02"));
    rows->add<NameAtom>("name", Box("name").shorts({4, 5}).raw("reel"));
    rows->add<FormatAtom>("frma", Box("frma").raw("sowt"));
    rows->add<EndianAtom>("enda", Box("enda").u16(1));
    rows->add<GenericSoundCompressionAtom>("settings of a sound codec", Box("chan").u32(7),
                                           AtomRow::FillsAtom | AtomRow::AnyType);
    rows->add<WaveAtom>("wave",
                        Box("wave")
                            .child(Box("frma").raw("mp4a"))
                            .child(Box("enda").u16(1))
                            .child(Box(QByteArray(4, '\0'))));
}

void addEntryRows(AtomRows *rows)
{
    rows->addMade<TableOf<FourCC("vide")>>(
        "stsd of video with every child",
        [](auto &atom) {
            static_cast<void>(atom.AddVideoDescription(FourCC("avc1"), 3840, 1920));
            auto &video = static_cast<VideoSampleDescription &>(*atom.entries.front());
            video.color.Ensure();
            video.fields.Ensure();
            video.pixelAspect.Ensure();
            readInto(video.avcc.Ensure(), kAvcc);
            readInto(video.hvcc.Ensure(), kHvcc);
            video.stereo.Ensure().SetStereoMode(2);
            static_cast<void>(video.spherical.Ensure().SetMetadataSource("x"));
        },
        table(Box("avc1")
                  .hex("000000000000 0001 00000000 20202020 00000000 000003FF")
                  .shorts({3840, 1920})
                  .words({0x480000, 0x480000, 0})
                  .u16(1)
                  .zeros(32)
                  .shorts({24, 0xFFFF})
                  .child(Box("colr").raw("nclc").shorts({1, 1, 1}))
                  .child(Box("fiel").u8(1).u8(0))
                  .child(Box("pasp").words({1, 1}))
                  .child(kAvcc)
                  .child(kHvcc)
                  .child(Box::full("st3d").u8(1))
                  .child(Box("sv3d")
                             .child(Box::full("svhd").raw("x").u8(0))
                             .child(Box("proj").child(Box::full("prhd").zeros(12))))));
    rows->addMade<TableOf<FourCC("soun")>>(
        "stsd of uncompressed sound",
        [](auto &atom) { static_cast<void>(atom.AddSoundDescription(FourCC("in24"), 2, 48000)); },
        table(Box("in24")
                  .hex("000000000000 0001 0002 0000 00000000 0002 0018 0000 0000 BB800000")
                  .words({72, 0x40E77000, 0, 2, 0x7F000000, 24, 0, 6, 1})
                  .child(
                      Box("wave").child(Box("frma").raw("in24")).child(Box(QByteArray(4, '\0'))))));
    rows->addMade<TableOf<FourCC("soun")>>(
        "stsd of compressed sound",
        [](auto &atom) {
            static_cast<void>(atom.AddSoundDescription(FourCC("mp4a"), 6, 48000));
            auto &sound = static_cast<SoundSampleDescription &>(*atom.entries.front());
            sound.version = 1;
            sound.esds->ES_Descriptor.esId = 7;
            sound.spatialAudio.Ensure().ambisonic_order = 1;
        },
        table(Box("mp4a")
                  .hex("000000000000 0001 0001 0000 00000000 0006 0010 FFFE 0000 BB800000")
                  .words({0, 0, 12, 2})
                  .child(kEsds)
                  .child(Box("SA3D").hex("0000 00000001 0000 00000004").words({0, 1, 2, 3}))));
    rows->add<TableOf<FourCC("tmcd")>>(
        "stsd of time code", table(Box(kTimeCode).child(Box("name").shorts({2, 0}).raw("A1"))));
    rows->add<TableOf<FourCC("text")>>("stsd of text", table(Box(kText).u8(4).raw("Sans")));
    rows->add<TableOf<FourCC("tmcd")>>("stsd of time code without a name", table(kTimeCode));
    rows->add<TableOf<FourCC("text")>>("stsd of text without a name", table(kText));
    rows->add<TableOf<FourCC("meta")>>("stsd of telemetry",
                                       table(Box("tvmd").zeros(6).u16(1).u32(5)));
}

} // namespace

void addDescriptionRows(AtomRows *rows)
{
    addLeafRows(rows);
    addEntryRows(rows);
}
