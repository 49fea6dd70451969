// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A place in a run-length table, kept between look-ups so that a walk over neighbouring samples
// is linear.

#include <cstddef>
#include <cstdint>

namespace Tavro::MovParserLib {

struct RunCursor
{
    size_t entry = 0;
    uint64_t samples = 0; ///< Before the entry.
    uint64_t time = 0; ///< Before the entry.

    /// On behind the entry.
    void Pass(uint64_t count, uint64_t duration)
    {
        ++entry;
        samples += count;
        time += count * duration;
    }
};

} // namespace Tavro::MovParserLib
