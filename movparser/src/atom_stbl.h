// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stbl`: the tables that say where each sample lies, how large it is and when it plays.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_ctts.h"
#include "movparser/src/atom_sdtp.h"
#include "movparser/src/atom_stco.h"
#include "movparser/src/atom_stsc.h"
#include "movparser/src/atom_stsd.h"
#include "movparser/src/atom_stss.h"
#include "movparser/src/atom_stsz.h"
#include "movparser/src/atom_stts.h"

namespace Tavro::MovParserLib {

/// What is known about one sample. Times are in the units of whoever fills it: of the media in
/// SampleTableAtom, microseconds in MovFileReader.
struct SampleInfo
{
    uint64_t position = 0; ///< In the file.
    uint32_t size = 0;
    uint64_t time = 0; ///< When it is shown; 0 for a time before the start.
    uint64_t duration = 0;
    bool isKey = false;
};

/// Fails to read without `stco` or `co64`; every other table may be absent. Sample indices count
/// from 0. Look-ups keep a cursor: they are for one thread at a time although they are const.
class SampleTableAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("stbl");

    SampleTableAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t GetSampleCount() const { return sampleSizes.sampleCount; }

    [[nodiscard]] Error GetSampleInfo(uint32_t index, SampleInfo *info) const;
    [[nodiscard]] Error GetSamplePosition(uint32_t index, uint64_t *position) const;

    /// Decoding time and duration; ERROR_ATOM_NOT_FOUND without `stts`.
    [[nodiscard]] Error GetSampleTime(uint32_t index, uint64_t *time, uint32_t *duration) const;

    /// The same with the composition offset; may be negative. A time that the number cannot hold
    /// is ERROR_MALFORMED_ATOM.
    [[nodiscard]] Error GetDisplayTime(uint32_t index, int64_t *time) const;

    [[nodiscard]] Error GetSampleIndexForTime(uint64_t time, uint32_t *index) const;
    [[nodiscard]] Error GetDurationRange(uint32_t *shortest, uint32_t *longest) const;

    /// Without `stss` every sample is one.
    bool IsSyncSample(uint32_t index) const;

    uint32_t handlerType = 0; ///< Set by the owner before Read(), handed on to `stsd`.
    SampleDescriptionAtom sampleDescriptions;
    SampleSizeAtom sampleSizes;
    SampleToChunkAtom sampleToChunk;
    ChunkOffsetAtom chunkOffsets;
    AtomPtr<TimeToSampleAtom> timeToSample;
    AtomPtr<SyncSampleAtom> syncSamples;
    AtomPtr<CompositionOffsetsAtom> compositionOffsets;
    AtomPtr<SampleDependenciesAtom> sampleDependencies;

private:
    // Where a sample lies in its chunk, from the last look-up on.
    struct PositionCursor
    {
        uint64_t sizes = 0; ///< Version of the table of sizes.
        uint32_t first = 0; ///< Index of the chunk's first sample.
        uint64_t chunkPosition = 0;
        uint32_t index = 0;
        uint64_t position = 0;
    };

    mutable PositionCursor m_cursor;
};

} // namespace Tavro::MovParserLib
