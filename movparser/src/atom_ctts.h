// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `ctts`: by how much a sample is shown later than it is decoded.

#include "movparser/src/atom_table.h"
#include "movparser/src/mov_full_atom.h"
#include "movparser/src/run_cursor.h"

#include <tuple>

namespace Tavro::MovParserLib {

/// A run of samples of one offset.
class CompositionOffsetsTableEntry
{
public:
    CompositionOffsetsTableEntry() = default;

    CompositionOffsetsTableEntry(uint32_t sampleCount_, int32_t sampleDelta_)
        : sampleCount(sampleCount_)
        , sampleDelta(sampleDelta_)
    { }

    CompositionOffsetsTableEntry(const CompositionOffsetsTableEntry &other) = default;
    virtual ~CompositionOffsetsTableEntry() = default;
    CompositionOffsetsTableEntry &operator=(const CompositionOffsetsTableEntry &other) = default;

    uint32_t sampleCount = 0;
    int32_t sampleDelta = 0; ///< In the media's units of time.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.sampleCount, self.sampleDelta);
    }
};

class CompositionOffsetsAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("ctts");

    CompositionOffsetsAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Lengthens the last run when its offset is the same, else begins another.
    [[nodiscard]] Error AddEntry(uint32_t count, int32_t delta);

    /// An empty table is ERROR_INVALID_ARG, a sample behind its end ERROR_INVALID_RET_VAL.
    [[nodiscard]] Error GetSampleDelta(uint32_t index, int32_t *delta) const;

    AtomTable<CompositionOffsetsTableEntry> entries;

private:
    mutable RunCursor m_cursor;
};

} // namespace Tavro::MovParserLib
