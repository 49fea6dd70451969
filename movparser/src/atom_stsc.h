// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stsc`: which chunk holds a sample.

#include "movparser/src/atom_table.h"
#include "movparser/src/mov_full_atom.h"
#include "movparser/src/run_cursor.h"

#include <tuple>

namespace Tavro::MovParserLib {

/// A run of chunks that hold as many samples each; it lasts to the next entry's first chunk.
class SampleToChunkTableEntry
{
public:
    SampleToChunkTableEntry() = default;

    SampleToChunkTableEntry(uint32_t firstChunk_, uint32_t samplesPerChunk_,
                            uint32_t sampleDescriptionId_)
        : firstChunk(firstChunk_)
        , samplesPerChunk(samplesPerChunk_)
        , sampleDescriptionId(sampleDescriptionId_)
    { }

    SampleToChunkTableEntry(const SampleToChunkTableEntry &other) = default;
    virtual ~SampleToChunkTableEntry() = default;
    SampleToChunkTableEntry &operator=(const SampleToChunkTableEntry &other) = default;

    uint32_t firstChunk = 0; ///< From 1.
    uint32_t samplesPerChunk = 0;
    uint32_t sampleDescriptionId = 0; ///< From 1.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.firstChunk, self.samplesPerChunk, self.sampleDescriptionId);
    }
};

/// Where a sample lies.
struct SampleChunk
{
    uint32_t number = 0; ///< From 1.
    uint32_t sample = 0; ///< Within the chunk, from 0.
    uint32_t sampleDescriptionId = 0;
};

class SampleToChunkAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("stsc");

    SampleToChunkAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Begins another run unless the last one says the same.
    [[nodiscard]] Error AddEntry(uint32_t firstChunk, uint32_t samplesPerChunk,
                                 uint32_t sampleDescriptionId);

    /// A run with no samples in its chunks, and an empty table, are ERROR_MALFORMED_ATOM.
    [[nodiscard]] Error GetChunk(uint32_t index, SampleChunk *chunk) const;

    AtomTable<SampleToChunkTableEntry> entries;

private:
    mutable RunCursor m_cursor;
};

} // namespace Tavro::MovParserLib
