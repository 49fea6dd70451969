// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A place in a run-length table, kept between look-ups so that a walk over neighbouring samples
// is linear.

#include <cstddef>
#include <cstdint>

namespace Tavro::MovParserLib {

struct RunCursor
{
    /// Makes the cursor one of this table, as it is now: back at the start unless it is already.
    template <class Table> void Follow(const Table &entries)
    {
        if (version != entries.Version())
            *this = {};
        version = entries.Version();
    }

    /// Back to the first entry.
    void Rewind()
    {
        entry = 0;
        samples = 0;
        time = 0;
    }

    size_t entry = 0;
    uint64_t samples = 0; ///< Before the entry.
    uint64_t time = 0; ///< Before the entry.
    uint64_t version = 0; ///< Of the table that the place is in.

    /// On behind the entry.
    void Pass(uint64_t count, uint64_t duration)
    {
        ++entry;
        samples += count;
        time += count * duration;
    }
};

} // namespace Tavro::MovParserLib
