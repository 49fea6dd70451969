// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stts`: the duration of each sample.

#include "movparser/src/atom_table.h"
#include "movparser/src/mov_full_atom.h"
#include "movparser/src/run_cursor.h"

#include <tuple>

namespace Tavro::MovParserLib {

/// A run of samples of one duration.
class TimeToSampleTableEntry
{
public:
    TimeToSampleTableEntry() = default;

    TimeToSampleTableEntry(uint32_t sampleCount_, uint32_t sampleDuration_)
        : sampleCount(sampleCount_)
        , sampleDuration(sampleDuration_)
    { }

    TimeToSampleTableEntry(const TimeToSampleTableEntry &other) = default;
    virtual ~TimeToSampleTableEntry() = default;
    TimeToSampleTableEntry &operator=(const TimeToSampleTableEntry &other) = default;

    uint32_t sampleCount = 0;
    uint32_t sampleDuration = 0; ///< In the media's units of time.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.sampleCount, self.sampleDuration);
    }
};

class TimeToSampleAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("stts");

    TimeToSampleAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Lengthens the last run when its duration is the same, else begins another.
    [[nodiscard]] Error AddEntry(uint32_t count, uint32_t duration);

    /// When a sample begins and how long it lasts. An empty table is ERROR_INVALID_ARG, a sample
    /// behind its end ERROR_INVALID_RET_VAL.
    [[nodiscard]] Error GetSampleTime(uint32_t index, uint64_t *time, uint32_t *duration) const;

    /// The sample that is shown at a time in decoding order; errors as above.
    [[nodiscard]] Error GetSampleIndex(uint64_t time, uint32_t *index) const;

    /// The shortest and the longest duration in the table; an empty one is ERROR_INVALID_ARG.
    [[nodiscard]] Error GetDurationRange(uint32_t *shortest, uint32_t *longest) const;

    AtomTable<TimeToSampleTableEntry> entries;

private:
    // Where the last look-up ended: neighbouring samples are found without a walk from the start.
    mutable RunCursor m_cursor;
};

} // namespace Tavro::MovParserLib
