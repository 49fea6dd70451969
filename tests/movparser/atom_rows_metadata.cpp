// SPDX-License-Identifier: GPL-3.0-or-later
#include "atom_rows.h"
#include "movparser/src/atom_sa3d.h"
#include "movparser/src/atom_st3d.h"
#include "movparser/src/atom_sv3d.h"
#include "movparser/src/atom_tvmd.h"
#include "movparser/src/atom_udta.h"
#include "movparser/src/atom_uuid.h"

using namespace Tavro::MovParserLib;

namespace {

const char kDocument[] =
    "<?xml version=\"1.0\"?>"
    "<rdf:SphericalVideo xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\""
    " xmlns:GSpherical=\"http://ns.google.com/videos/1.0/spherical/\">"
    "<GSpherical:Spherical>true</GSpherical:Spherical>"
    "<GSpherical:Stitched>true</GSpherical:Stitched>"
    "<GSpherical:StitchingSoftware>Stitcher</GSpherical:StitchingSoftware>"
    "<GSpherical:ProjectionType>equirectangular</GSpherical:ProjectionType>"
    "<GSpherical:SourceCount>12</GSpherical:SourceCount>"
    "<GSpherical:StereoMode>top-bottom</GSpherical:StereoMode>"
    "</rdf:SphericalVideo>";

Box projectionHeader()
{
    return Box::full("prhd").u32(0x005A8000).u32(0xFFFF0000).u32(0);
}

void fillProjectionHeader(sphericalProjectionHeaderAtom &atom)
{
    atom.SetPose(90.5f, -1, 0);
}

Box cubeProjection()
{
    return Box("proj").child(projectionHeader()).child(Box::full("cbmp").u32(1).u32(2));
}

void fillCubeProjection(sphericalProjectionAtom &atom)
{
    fillProjectionHeader(atom.header);
    atom.SetEqui(1, 2, 3, 4); // which the cube map replaces
    atom.SetCube(1, 2);
}

void addSphericalRows(AtomRows *rows)
{
    addRow<spatialAudioAtom>(
        rows, "SA3D without order",
        [](spatialAudioAtom &atom) {
            atom.version = 1;
            atom.ambisonic_type = 2;
            atom.ambisonic_channel_ordering = 3;
            atom.ambisonic_normalization = 4;
            atom.num_channels = 2;
            atom.channel_map = {7, 9};
        },
        Box("SA3D").u8(1).u8(2).u32(0).u8(3).u8(4).u32(2).u32(7).u32(9));
    addRow<spatialAudioAtom>(
        rows, "SA3D of order 2 has 8 channels, numbered in their order",
        [](spatialAudioAtom &atom) { atom.ambisonic_order = 2; },
        Box("SA3D")
            .u16(0)
            .u32(2)
            .u16(0)
            .u32(8)
            .u32(0)
            .u32(1)
            .u32(2)
            .u32(3)
            .u32(4)
            .u32(5)
            .u32(6)
            .u32(7));
    addRow<stereoVideoAtom>(
        rows, "st3d", [](stereoVideoAtom &atom) { atom.SetStereoMode(1); },
        Box::full("st3d").u8(2));
    addRow<sphericalEquiAtom>(
        rows, "equi",
        [](sphericalEquiAtom &atom) {
            atom.projection_bounds_top = 1;
            atom.projection_bounds_bottom = 2;
            atom.projection_bounds_left = 3;
            atom.projection_bounds_right = 0xFFFFFFFF;
        },
        Box::full("equi").u32(1).u32(2).u32(3).u32(0xFFFFFFFF));
    addRow<sphericalCubeAtom>(
        rows, "cbmp",
        [](sphericalCubeAtom &atom) {
            atom.layout = 5;
            atom.padding = 6;
        },
        Box::full("cbmp").u32(5).u32(6));
    addRow<sphericalProjectionHeaderAtom>(rows, "prhd", fillProjectionHeader, projectionHeader());
    addRow<sphericalProjectionAtom>(rows, "proj", fillCubeProjection, cubeProjection());
    addRow<sphericalVideoHeaderAtom>(
        rows, "svhd",
        [](sphericalVideoHeaderAtom &atom) {
            static_cast<void>(atom.SetMetadataSource(std::string("a tool\0cut", 10)));
        },
        Box::full("svhd").raw(QByteArray("a tool", 7)));
    addRow<sphericalVideoAtom>(
        rows, "sv3d",
        [](sphericalVideoAtom &atom) {
            static_cast<void>(atom.SetMetadataSource("x"));
            fillCubeProjection(atom.projection);
        },
        Box("sv3d").child(Box::full("svhd").u8('x').u8(0)).child(cubeProjection()));
    addRow<sphericalVideoLegacyAtom>(
        rows, "uuid",
        [](sphericalVideoLegacyAtom &atom) {
            atom.SetStitchingSoftware("Stitcher");
            atom.SetSourceCount(12);
            atom.SetStereoMode(2);
        },
        Box("uuid").raw(QByteArray::fromHex("ffcc8263f8554a938814587a02521fdd")).raw(kDocument),
        AtomRow::FillsAtom);
}

Box rigIdentity()
{
    return Box("TURI").u64(0x0102030405060708).u8(9).u8(10).u8(11).u8(12).u16(13).u16(14);
}

Box rigShot()
{
    return Box("TUSI").u64(0x0102030405060708).u32(9).u16(10).u16(0);
}

Box settings()
{
    // Words that are the same from both ends: writing reverses the bytes of each.
    return Box("SETT").u32(0x01020201).u32(0x7F00007F);
}

void fillSettings(TavroCameraSettingsAtom &atom)
{
    ExactBuffer buffer(settings().bytes());
    static_cast<void>(atom.Read(*buffer));
}

void fillTags(TavroKeymarkTagAtom &atom)
{
    const uint32_t tags[] = {1500, 62000};
    static_cast<void>(atom.SetTags(2, tags));
}

void addUserDataRows(AtomRows *rows)
{
    addRow<TavroCameraFirmwareAtom>(
        rows, "FIRM", [](TavroCameraFirmwareAtom &atom) { atom.SetVersion("1.2"); },
        Box("FIRM").raw("1.2"), AtomRow::FillsAtom);
    addRow<TavroCameraIDAtom>(
        rows, "CAME",
        [](TavroCameraIDAtom &atom) {
            atom.data = {1, 0, 255};
        },
        Box("CAME").u8(1).u8(0).u8(255), AtomRow::FillsAtom);
    addRow<TavroCameraLENSAtom>(
        rows, "LENS",
        [](TavroCameraLENSAtom &atom) {
            atom.data = {'L', 2};
        },
        Box("LENS").raw("L\x02"), AtomRow::FillsAtom);
    addRow<TavroCameraFOVAtom>(
        rows, "FOV",
        [](TavroCameraFOVAtom &atom) {
            atom.data = {'w', 0};
        },
        Box(QByteArray("FOV", 4)).u8('w').u8(0), AtomRow::FillsAtom);
    addRow<TavroMediaUniqueIdAtom>(
        rows, "MUID",
        [](TavroMediaUniqueIdAtom &atom) {
            atom.data = {3, 4};
        },
        Box("MUID").u8(3).u8(4), AtomRow::FillsAtom);
    addRow<TavroCameraSettingsAtom>(rows, "SETT", fillSettings, settings(), AtomRow::FillsAtom);
    addRow<TavroCameraTURIAtom>(
        rows, "TURI",
        [](TavroCameraTURIAtom &atom) {
            atom.record = {0x0102030405060708, 9, {10, 11, 12}, 13, 14};
        },
        rigIdentity(), AtomRow::FillsAtom);
    addRow<TavroCameraTUSIAtom>(
        rows, "TUSI",
        [](TavroCameraTUSIAtom &atom) {
            atom.record = {0, 0x0102030405060708, 9, 10};
        },
        rigShot(), AtomRow::FillsAtom | AtomRow::UnreadTail);
    addRow<TavroKeymarkTagAtom>(rows, "HMMT", fillTags, Box("HMMT").u32(2).u32(1500).u32(62000));
    addRow<TVMFHandlerAtom>(
        rows, "tvmd", [](TVMFHandlerAtom &atom) { atom.value = 77; }, Box("tvmd").u32(77));
    addRow<UserDataAtom>(
        rows, "udta with every child, and unknown ones in the order of their types",
        [](UserDataAtom &atom) {
            ExactBuffer unknown(
                Box("udta").child(Box("zzzz").u8(1)).child(Box("aaaa").u8(2)).bytes());
            static_cast<void>(atom.Read(*unknown));
            atom.firmware.Ensure().SetVersion("1.2");
            atom.cameraId.Ensure().data = {1};
            fillSettings(atom.settings.Ensure());
            atom.lens.Ensure(); // without data: a 0 byte stands for them
            atom.fov.Ensure().data = {2};
            atom.rigIdentity.Ensure().record = {0x0102030405060708, 9, {10, 11, 12}, 13, 14};
            atom.rigShot.Ensure().record = {0, 0x0102030405060708, 9, 10};
            fillTags(atom.tags.Ensure());
            atom.mediaUniqueId.Ensure().data = {3};
        },
        Box("udta")
            .child(Box("FIRM").raw("1.2"))
            .child(Box("CAME").u8(1))
            .child(settings())
            .child(Box("LENS").u8(0))
            .child(Box(QByteArray("FOV", 4)).u8(2))
            .child(rigIdentity())
            .child(rigShot())
            .child(Box("HMMT").u32(2).u32(1500).u32(62000))
            .child(Box("MUID").u8(3))
            .child(Box("aaaa").u8(2))
            .child(Box("zzzz").u8(1)));
}

} // namespace

void addMetadataRows(AtomRows *rows)
{
    addSphericalRows(rows);
    addUserDataRows(rows);
}
