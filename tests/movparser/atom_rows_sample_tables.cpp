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

namespace {

struct VideoSampleTable : SampleTableAtom
{
    VideoSampleTable() { handlerType = sampleDescriptions.mediaType = FourCC("vide"); }

    using SampleTableAtom::operator=;
};

} // namespace

void addSampleTableRows(AtomRows *rows)
{
    rows->add<SampleSizeAtom>("stsz with one size for all",
                              Box::full("stsz").words({77, 4000000000}));
    rows->add<SampleSizeAtom>("stsz with a table",
                              Box::full("stsz").words({0, 3, 1, 0xFFFFFFFF, 3}));
    rows->add<TimeToSampleAtom>("stts",
                                Box::full("stts", 1, 0x020304).words({2, 5, 6, 7, 0xFFFFFFFF}));
    rows->add<CompositionOffsetsAtom>("ctts with a negative offset",
                                      Box::full("ctts").words({2, 5, 6, 7, 0xFFFFFFF8}));
    rows->add<SyncSampleAtom>("stss", Box::full("stss").words({2, 1, 31}));
    rows->add<SampleDependenciesAtom>("sdtp", Box::full("sdtp").hex("1020FF"), AtomRow::FillsAtom);
    rows->add<SampleToChunkAtom>("stsc", Box::full("stsc").words({2, 1, 10, 1, 5, 3, 2}));
    rows->add<ChunkOffsetAtom>("stco", Box::full("stco").words({2, 40, 0xFFFFFFFF}));
    rows->addMade<ChunkOffsetAtom>(
        "co64",
        [](ChunkOffsetAtom &atom) {
            atom.type = ChunkOffsetAtom::kWideType;
            atom.offsets = {40, 0x123456789A};
        },
        Box::full("co64").u32(2).u64(40).u64(0x123456789A));
    rows->add<VideoSampleTable>("stbl with every table",
                                Box("stbl")
                                    .child(Box::full("stsd").u32(0))
                                    .child(Box::full("stts").words({1, 2, 100}))
                                    .child(Box::full("stss").words({1, 1}))
                                    .child(Box::full("ctts").words({1, 2, 50}))
                                    .child(Box::full("sdtp").shorts({0x0102}))
                                    .child(Box::full("stsc").words({1, 1, 2, 1}))
                                    .child(Box::full("stsz").words({0, 2, 7, 9}))
                                    .child(Box::full("stco").words({1, 48})),
                                AtomRow::SearchesChildren);
}
