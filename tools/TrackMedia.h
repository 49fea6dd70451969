// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What the movie atom says about where the samples of its tracks lie: in this file or in another.

#include "tools/RawAtom.h"

#include <map>

/// For each data reference in a `dinf`, which may be null, whether it leads to another file.
std::vector<bool> filesElsewhere(const RawAtom *dinf);

struct TrackMedia
{
    TrackMedia() = default;

    /// By the table of samples, which is taken apart, and the files beside it.
    TrackMedia(const RawAtom &sampleTable, const std::vector<bool> &files);

    /// Whether the samples with a description, counted from 1, lie in another file.
    bool isElsewhere(uint64_t description) const
    {
        return description > 0 && description <= elsewhere.size() && elsewhere[description - 1];
    }

    std::vector<bool> elsewhere; ///< By description.
    // What fragments take over.
    uint32_t defaultDescription = 1;
    uint32_t defaultSampleSize = 0;
};

/// By track number; the movie atom must be taken apart down to its `stbl`.
std::map<uint32_t, TrackMedia> trackMedia(const RawAtom &movie);
