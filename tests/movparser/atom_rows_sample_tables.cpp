// SPDX-License-Identifier: GPL-3.0-or-later
#include "atom_rows.h"
#include "movparser/src/atom_ctts.h"
#include "movparser/src/atom_sdtp.h"
#include "movparser/src/atom_stbl.h"
#include "movparser/src/atom_stco.h"
#include "movparser/src/atom_stsc.h"
#include "movparser/src/atom_stss.h"
#include "movparser/src/atom_stsz.h"
#include "movparser/src/atom_stts.h"

using namespace Tavro::MovParserLib;

void addSampleTableRows(AtomRows *rows)
{
    addRow<SampleSizeAtom>(
        rows, "stsz with one size for all",
        [](SampleSizeAtom &atom) {
            atom.uniformSize = 77;
            atom.sampleCount = 4000000000;
        },
        Box::full("stsz").u32(77).u32(4000000000));
    addRow<SampleSizeAtom>(
        rows, "stsz with a table",
        [](SampleSizeAtom &atom) {
            atom.sampleCount = 3;
            atom.sizes = {1, 0xFFFFFFFF, 3};
        },
        Box::full("stsz").u32(0).u32(3).u32(1).u32(0xFFFFFFFF).u32(3));
    addRow<TimeToSampleAtom>(
        rows, "stts",
        [](TimeToSampleAtom &atom) {
            atom.version = 1;
            atom.flags = {2, 3, 4};
            atom.entries = {{5, 6}, {7, 0xFFFFFFFF}};
        },
        Box::full("stts", 1, 0x020304).u32(2).u32(5).u32(6).u32(7).u32(0xFFFFFFFF));
    addRow<CompositionOffsetsAtom>(
        rows, "ctts with a negative offset",
        [](CompositionOffsetsAtom &atom) {
            atom.entries = {{5, 6}, {7, -8}};
        },
        Box::full("ctts").u32(2).u32(5).u32(6).u32(7).u32(0xFFFFFFF8));
    addRow<SyncSampleAtom>(
        rows, "stss",
        [](SyncSampleAtom &atom) {
            atom.sampleNumbers = {1, 31};
        },
        Box::full("stss").u32(2).u32(1).u32(31));
    addRow<SampleDependenciesAtom>(
        rows, "sdtp",
        [](SampleDependenciesAtom &atom) {
            atom.dependencies = {0x10, 0x20, 0xFF};
        },
        Box::full("sdtp").raw("\x10\x20\xFF"), AtomRow::FillsAtom);
    addRow<SampleToChunkAtom>(
        rows, "stsc",
        [](SampleToChunkAtom &atom) {
            atom.entries = {{1, 10, 1}, {5, 3, 2}};
        },
        Box::full("stsc").u32(2).u32(1).u32(10).u32(1).u32(5).u32(3).u32(2));
    addRow<ChunkOffsetAtom>(
        rows, "stco",
        [](ChunkOffsetAtom &atom) {
            atom.offsets = {40, 0xFFFFFFFF};
        },
        Box::full("stco").u32(2).u32(40).u32(0xFFFFFFFF));
    addRow<ChunkOffsetAtom>(
        rows, "co64",
        [](ChunkOffsetAtom &atom) {
            atom.type = ChunkOffsetAtom::kWideType;
            atom.offsets = {40, 0x123456789A};
        },
        Box::full("co64").u32(2).u64(40).u64(0x123456789A));
    addRow<SampleTableAtom>(
        rows, "stbl with every table",
        [](SampleTableAtom &atom) {
            atom.timeToSample.Ensure().entries = {{2, 100}};
            atom.syncSamples.Ensure().sampleNumbers = {1};
            atom.compositionOffsets.Ensure().entries = {{2, 50}};
            atom.sampleDependencies.Ensure().dependencies = {1, 2};
            atom.sampleToChunk.entries = {{1, 2, 1}};
            atom.sampleSizes.sampleCount = 2;
            atom.sampleSizes.sizes = {7, 9};
            atom.chunkOffsets.offsets = {48};
        },
        Box("stbl")
            .child(Box::full("stsd").u32(0))
            .child(Box::full("stts").u32(1).u32(2).u32(100))
            .child(Box::full("stss").u32(1).u32(1))
            .child(Box::full("ctts").u32(1).u32(2).u32(50))
            .child(Box::full("sdtp").u8(1).u8(2))
            .child(Box::full("stsc").u32(1).u32(1).u32(2).u32(1))
            .child(Box::full("stsz").u32(0).u32(2).u32(7).u32(9))
            .child(Box::full("stco").u32(1).u32(48)),
        AtomRow::SearchesChildren,
        [](SampleTableAtom &atom) {
            atom.handlerType = FourCC("vide");
            atom.sampleDescriptions.mediaType = FourCC("vide");
        });
}
