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

const Box kProjectionHeader = Box::full("prhd").words({0x005A8000, 0xFFFF0000, 0});
const Box kCubeProjection =
    Box("proj").child(kProjectionHeader).child(Box::full("cbmp").words({1, 2}));

void addSphericalRows(AtomRows *rows)
{
    rows->add<spatialAudioAtom>("SA3D without order",
                                Box("SA3D").hex("01 02 00000000 03 04").words({2, 7, 9}));
    rows->addMade<spatialAudioAtom>(
        "SA3D of order 2 has 8 channels, numbered in their order",
        [](spatialAudioAtom &atom) { atom.ambisonic_order = 2; },
        Box("SA3D").hex("00 00 00000002 00 00").words({8, 0, 1, 2, 3, 4, 5, 6, 7}));
    rows->add<stereoVideoAtom>("st3d", Box::full("st3d").u8(2));
    rows->add<sphericalEquiAtom>("equi", Box::full("equi").words({1, 2, 3, 0xFFFFFFFF}));
    rows->add<sphericalCubeAtom>("cbmp", Box::full("cbmp").words({5, 6}));
    rows->add<sphericalProjectionHeaderAtom>("prhd", kProjectionHeader);
    rows->addMade<sphericalProjectionAtom>(
        "proj",
        [](sphericalProjectionAtom &atom) {
            atom.header.SetPose(90.5f, -1, 0);
            atom.SetEqui(1, 2, 3, 4); // which the cube map replaces
            atom.SetCube(1, 2);
        },
        kCubeProjection);
    rows->addMade<sphericalVideoHeaderAtom>(
        "svhd",
        [](sphericalVideoHeaderAtom &atom) {
            static_cast<void>(atom.SetMetadataSource(std::string("a tool\0cut", 10)));
        },
        Box::full("svhd").raw("a tool").u8(0));
    rows->add<sphericalVideoAtom>(
        "sv3d", Box("sv3d").child(Box::full("svhd").raw("x").u8(0)).child(kCubeProjection));
    rows->addMade<sphericalVideoLegacyAtom>(
        "uuid",
        [](sphericalVideoLegacyAtom &atom) {
            atom.SetStitchingSoftware("Stitcher");
            atom.SetSourceCount(12);
            atom.SetStereoMode(2);
        },
        Box("uuid").hex("ffcc8263f8554a938814587a02521fdd").raw(kDocument), AtomRow::FillsAtom);
}

void addUserDataRows(AtomRows *rows)
{
    constexpr int kFills = AtomRow::FillsAtom;
    const Box firmware = Box("FIRM").raw("1.2");
    const Box camera = Box("CAME").hex("0100FF");
    const Box fov = Box(QByteArray("FOV", 4)).hex("7700");
    const Box id = Box("MUID").hex("0304");
    // Words that are the same from both ends: writing reverses the bytes of each.
    const Box settings = Box("SETT").words({0x01020201, 0x7F00007F});
    const Box rig = Box("TURI").hex("0102030405060708 09 0A0B0C 000D 000E");
    const Box shot = Box("TUSI").hex("0102030405060708 00000009 000A 0000");
    const Box tags = Box("HMMT").words({2, 1500, 62000});
    const Box first = Box("aaaa").u8(2);
    const Box last = Box("zzzz").u8(1);

    rows->add<TavroCameraFirmwareAtom>("FIRM", firmware, kFills);
    rows->add<TavroCameraIDAtom>("CAME", camera, kFills);
    rows->add<TavroCameraLENSAtom>("LENS", Box("LENS").raw("L\x02"), kFills);
    rows->add<TavroCameraFOVAtom>("FOV", fov, kFills);
    rows->add<TavroMediaUniqueIdAtom>("MUID", id, kFills);
    rows->add<TavroCameraSettingsAtom>("SETT", settings, kFills);
    rows->add<TavroCameraTURIAtom>("TURI", rig, kFills);
    rows->add<TavroCameraTUSIAtom>("TUSI", shot, kFills | AtomRow::UnreadTail);
    rows->add<TavroKeymarkTagAtom>("HMMT", tags);
    rows->add<TVMFHandlerAtom>("tvmd", Box("tvmd").u32(77));

    const auto userData = [](const std::initializer_list<Box> &children) {
        Box box("udta");
        for (const Box &child : children)
            box = std::move(box).child(child);
        return box;
    };
    const Box inAnyOrder =
        userData({last, id, tags, shot, rig, fov, settings, camera, firmware, first});
    rows->addMade<UserDataAtom>(
        "udta with every child, and unknown ones in the order of their types",
        [inAnyOrder](UserDataAtom &atom) {
            readInto(atom, inAnyOrder);
            atom.lens.Ensure(); // without data: a 0 byte stands for them
        },
        userData({firmware, camera, settings, Box("LENS").u8(0), fov, rig, shot, tags, id, first,
                  last}));
}

} // namespace

void addMetadataRows(AtomRows *rows)
{
    addSphericalRows(rows);
    addUserDataRows(rows);
}
