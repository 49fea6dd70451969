// SPDX-License-Identifier: GPL-3.0-or-later
#include "atom_rows.h"
#include "movparser/src/atom_stsd.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/tavro_metadata_sample_description.h"
#include "movparser/src/text_sample_description.h"
#include "movparser/src/time_code_sample_description.h"
#include "movparser/src/video_sample_description.h"

using namespace Tavro::MovParserLib;

namespace {

/// An entry of a description table up to the fields of its kind.
Box entry(const char *format)
{
    return Box(format).zeros(6).u16(1);
}

Box table(const Box &onlyEntry)
{
    return Box::full("stsd").u32(1).child(onlyEntry);
}

/// A table whose kind its owner has set.
template <class Fill>
void addTableRow(AtomRows *rows, const char *name, uint32_t kind, Fill fill, const Box &onlyEntry)
{
    addRow<SampleDescriptionAtom>(
        rows, name, [fill](SampleDescriptionAtom &atom) { atom.entries.emplace_back(fill()); },
        table(onlyEntry), AtomRow::None,
        [kind](SampleDescriptionAtom &atom) { atom.mediaType = kind; });
}

Box avcc()
{
    return Box("avcC").raw(QByteArray::fromHex("0164002affe1000367010201000268ce"));
}

void fillAvcc(AVCCAtom &atom)
{
    atom.AVCProfileIndication = 100;
    atom.AVCLevelIndication = 42;
    atom.sequenceParameterSet = {0x67, 1, 2};
    atom.pictureParameterSet = {0x68, 0xCE};
}

Box hvcc()
{
    return Box("hvcC").raw(QByteArray::fromHex(
        "016160000000b0010203040599f123fefdfafb18a0ac02a000010002aabb21000200000001cc"));
}

void fillHvcc(HVCCAtom &atom)
{
    atom.general_profile_space = 1;
    atom.general_tier_flag = true;
    atom.general_profile_idc = 1;
    atom.general_profile_compatibility_flags = 0x60000000;
    atom.general_constraint_indicator_flags = 0xB00102030405;
    atom.general_level_idc = 0x99;
    atom.min_spatial_segmentation_idc = 0x123;
    atom.parallelismType = 2;
    atom.chromaFormat = 1;
    atom.bitDepthLumaMinus8 = 2;
    atom.bitDepthChromaMinus8 = 3;
    atom.avgFrameRate = 0x18A0;
    atom.constantFrameRate = 2;
    atom.numTemporalLayers = 5;
    atom.temporalIdNested = true;
    atom.lengthSizeMinusOne = 0;
    atom.arrays = {{true, 32, {{0xAA, 0xBB}}}, {false, 33, {{}, {0xCC}}}};
}

Box esds()
{
    return Box::full("esds").raw(
        QByteArray::fromHex("038080802200070004808080144015002000"
                            "0003e80000000000058080800211b006808080"
                            "0102"));
}

void fillEsds(EsdsAtom &atom)
{
    atom.ES_Descriptor.esId = 7;
    atom.SetAudio(48000, 6);
}

void addLeafRows(AtomRows *rows)
{
    addRow<PixelAspectAtom>(
        rows, "pasp",
        [](PixelAspectAtom &atom) {
            atom.horizontalSpacing = 4;
            atom.verticalSpacing = 3;
        },
        Box("pasp").u32(4).u32(3), AtomRow::StopsBehindFields);
    addRow<ColorAtom>(
        rows, "colr nclc", [](ColorAtom &atom) { atom.matrix = 9; },
        Box("colr").raw("nclc").u16(1).u16(1).u16(9), AtomRow::StopsBehindFields);
    addRow<ColorAtom>(
        rows, "colr nclx with one byte more",
        [](ColorAtom &atom) {
            atom.colorParamType = ColorAtom::kNclx;
            atom.nclxReserved = 0x80;
        },
        Box("colr").raw("nclx").u16(1).u16(1).u16(1).u8(0x80), AtomRow::StopsBehindFields);
    addRow<FieldsAtom>(
        rows, "fiel",
        [](FieldsAtom &atom) {
            atom.fields = 2;
            atom.detail = 9;
        },
        Box("fiel").u8(2).u8(9), AtomRow::StopsBehindFields);
    addRow<AVCCAtom>(rows, "avcC", fillAvcc, avcc());
    addRow<HVCCAtom>(rows, "hvcC", fillHvcc, hvcc());
    addRow<EsdsAtom>(rows, "esds", fillEsds, esds());
    addRow<EsdsAtom>(
        rows, "esds with a rate in clear and every optional field",
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
        Box::full("esds").raw(QByteArray::fromHex("038080802b0000e3000101750002"
                                                  "04808080174017002000"
                                                  "0003e800000000000580808005"
                                                  "1780181c9006808080"
                                                  "0102")));
    addRow<EsdsAtom>(
        rows, "esds whose channels are told elsewhere",
        [](EsdsAtom &atom) { atom.SetAudio(48000, 9); },
        Box::full("esds").raw(QByteArray::fromHex("0380808022000000048080801440150020000003e800"
                                                  "000000000580808002118006808080"
                                                  "0102")));
    addRow<NameAtom>(
        rows, "name",
        [](NameAtom &atom) {
            atom.language = 5;
            atom.SetName("reel");
        },
        Box("name").u16(4).u16(5).raw("reel"));
    addRow<FormatAtom>(
        rows, "frma", [](FormatAtom &atom) { atom.format = FourCC("sowt"); },
        Box("frma").raw("sowt"));
    addRow<EndianAtom>(
        rows, "enda", [](EndianAtom &atom) { atom.littleEndian = 1; }, Box("enda").u16(1));
    addRow<GenericSoundCompressionAtom>(
        rows, "settings of a sound codec",
        [](GenericSoundCompressionAtom &atom) {
            ExactBuffer bytes(Box("chan").u32(7).bytes());
            if (atom.Read(*bytes) != MovAtom::ERROR_OKAY)
                qFatal("the atom to start from cannot be read");
        },
        Box("chan").u32(7), AtomRow::FillsAtom | AtomRow::AnyType);
    addRow<WaveAtom>(
        rows, "wave",
        [](WaveAtom &atom) {
            atom.format.Ensure().format = FourCC("mp4a");
            atom.endian.Ensure().littleEndian = 1;
            atom.settings.emplace_back();
        },
        Box("wave")
            .child(Box("frma").raw("mp4a"))
            .child(Box("enda").u16(1))
            .child(Box(QByteArray(4, '\0'))));
}

void addEntryRows(AtomRows *rows)
{
    addTableRow(
        rows, "stsd of video with every child", FourCC("vide"),
        [] {
            auto video = std::make_unique<VideoSampleDescription>();
            video->data_format = FourCC("avc1");
            video->width = 3840;
            video->height = 1920;
            video->color.Ensure();
            video->fields.Ensure();
            video->pixelAspect.Ensure();
            fillAvcc(video->avcc.Ensure());
            fillHvcc(video->hvcc.Ensure());
            video->stereo.Ensure().SetStereoMode(2);
            static_cast<void>(video->spherical.Ensure().SetMetadataSource("x"));
            return video;
        },
        entry("avc1")
            .u32(0)
            .raw("    ")
            .u32(0)
            .u32(1023)
            .u16(3840)
            .u16(1920)
            .u32(0x480000)
            .u32(0x480000)
            .u32(0)
            .u16(1)
            .zeros(32)
            .u16(24)
            .u16(0xFFFF)
            .child(Box("colr").raw("nclc").u16(1).u16(1).u16(1))
            .child(Box("fiel").u8(1).u8(0))
            .child(Box("pasp").u32(1).u32(1))
            .child(avcc())
            .child(hvcc())
            .child(Box::full("st3d").u8(1))
            .child(Box("sv3d")
                       .child(Box::full("svhd").u8('x').u8(0))
                       .child(Box("proj").child(Box::full("prhd").zeros(12)))));
    addTableRow(
        rows, "stsd of uncompressed sound", FourCC("soun"),
        [] {
            auto sound = std::make_unique<SoundSampleDescription>();
            static_cast<void>(sound->SetFormat(FourCC("in24"), 2, 48000));
            return sound;
        },
        entry("in24")
            .u16(2)
            .u16(0)
            .u32(0)
            .u16(2)
            .u16(24)
            .u16(0)
            .u16(0)
            .u32(48000U << 16)
            .u32(72)
            .u64(0x40E7700000000000)
            .u32(2)
            .u32(0x7F000000)
            .u32(24)
            .u32(0)
            .u32(6)
            .u32(1)
            .child(Box("wave").child(Box("frma").raw("in24")).child(Box(QByteArray(4, '\0')))));
    addTableRow(
        rows, "stsd of compressed sound", FourCC("soun"),
        [] {
            auto sound = std::make_unique<SoundSampleDescription>();
            static_cast<void>(sound->SetFormat(FourCC("mp4a"), 6, 48000));
            sound->version = 1;
            fillEsds(*sound->esds);
            sound->spatialAudio.Ensure().ambisonic_order = 1;
            return sound;
        },
        entry("mp4a")
            .u16(1)
            .u16(0)
            .u32(0)
            .u16(6)
            .u16(16)
            .u16(0xFFFE)
            .u16(0)
            .u32(48000U << 16)
            .u32(0)
            .u32(0)
            .u32(12)
            .u32(2)
            .child(esds())
            .child(Box("SA3D").u16(0).u32(1).u16(0).u32(4).u32(0).u32(1).u32(2).u32(3)));
    addTableRow(
        rows, "stsd of time code", FourCC("tmcd"),
        [] {
            auto timeCode = std::make_unique<TimeCodeSampleDescription>();
            timeCode->data_format = FourCC("tmcd");
            timeCode->flags = 1;
            timeCode->timeScale = 30000;
            timeCode->frameDuration = 1001;
            timeCode->numberOfFrames = 30;
            timeCode->name.Ensure().SetName("A1");
            return timeCode;
        },
        entry("tmcd").u32(0).u32(1).u32(30000).u32(1001).u8(30).u8(0).child(
            Box("name").u16(2).u16(0).raw("A1")));
    addTableRow(
        rows, "stsd of text", FourCC("text"),
        [] {
            auto text = std::make_unique<TextSampleDescription>();
            text->data_format = FourCC("text");
            text->displayFlags = 1;
            text->textJustification = 2;
            text->backgroundColor = {3, 4, 5};
            text->defaultTextBox = {6, 7, 8, 9};
            text->fontNumber = 10;
            text->fontFace = 11;
            text->foregroundColor = {12, 13, 14};
            text->SetTextName("Sans");
            return text;
        },
        entry("text")
            .u32(1)
            .u32(2)
            .u16(3)
            .u16(4)
            .u16(5)
            .u16(6)
            .u16(7)
            .u16(8)
            .u16(9)
            .u64(0)
            .u16(10)
            .u16(11)
            .zeros(3)
            .u16(12)
            .u16(13)
            .u16(14)
            .u8(4)
            .raw("Sans"));
    addTableRow(
        rows, "stsd of time code without a name", FourCC("tmcd"),
        [] {
            auto timeCode = std::make_unique<TimeCodeSampleDescription>();
            timeCode->data_format = FourCC("tmcd");
            timeCode->timeScale = 25;
            timeCode->frameDuration = 1;
            timeCode->numberOfFrames = 25;
            return timeCode;
        },
        entry("tmcd").u32(0).u32(0).u32(25).u32(1).u8(25).u8(0));
    addTableRow(
        rows, "stsd of text without a name", FourCC("text"),
        [] {
            auto text = std::make_unique<TextSampleDescription>();
            text->data_format = FourCC("text");
            return text;
        },
        entry("text").zeros(43));
    addTableRow(
        rows, "stsd of telemetry", FourCC("meta"),
        [] {
            auto telemetry = std::make_unique<TavroMetadataSampleDescription>();
            telemetry->value = 5;
            return telemetry;
        },
        entry("tvmd").u32(5));
}

} // namespace

void addDescriptionRows(AtomRows *rows)
{
    addLeafRows(rows);
    addEntryRows(rows);
}
