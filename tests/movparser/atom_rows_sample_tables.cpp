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
    addRow<SampleSizeAtom>(rows, "stsz with one size for all",
                           Box::full("stsz").words({77, 4000000000}));
    addRow<SampleSizeAtom>(rows, "stsz with a table",
                           Box::full("stsz").words({0, 3, 1, 0xFFFFFFFF, 3}));
    addRow<TimeToSampleAtom>(rows, "stts",
                             Box::full("stts", 1, 0x020304).words({2, 5, 6, 7, 0xFFFFFFFF}));
    addRow<CompositionOffsetsAtom>(rows, "ctts with a negative offset",
                                   Box::full("ctts").words({2, 5, 6, 7, 0xFFFFFFF8}));
    addRow<SyncSampleAtom>(rows, "stss", Box::full("stss").words({2, 1, 31}));
    addRow<SampleDependenciesAtom>(rows, "sdtp", Box::full("sdtp").hex("1020FF"),
                                   AtomRow::FillsAtom);
    addRow<SampleToChunkAtom>(rows, "stsc", Box::full("stsc").words({2, 1, 10, 1, 5, 3, 2}));
    addRow<ChunkOffsetAtom>(rows, "stco", Box::full("stco").words({2, 40, 0xFFFFFFFF}));
    addMadeRow<ChunkOffsetAtom>(
        rows, "co64",
        [](ChunkOffsetAtom &atom) {
            atom.type = ChunkOffsetAtom::kWideType;
            atom.offsets = {40, 0x123456789A};
        },
        Box::full("co64").u32(2).u64(40).u64(0x123456789A));
    // Tables that do not lie in the bytes of a file.
    addMadeRow<SampleTableAtom>(
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
            .child(Box::full("stts").words({1, 2, 100}))
            .child(Box::full("stss").words({1, 1}))
            .child(Box::full("ctts").words({1, 2, 50}))
            .child(Box::full("sdtp").shorts({0x0102}))
            .child(Box::full("stsc").words({1, 1, 2, 1}))
            .child(Box::full("stsz").words({0, 2, 7, 9}))
            .child(Box::full("stco").words({1, 48})),
        AtomRow::SearchesChildren,
        [](SampleTableAtom &atom) {
            atom.handlerType = FourCC("vide");
            atom.sampleDescriptions.mediaType = FourCC("vide");
        });
}
