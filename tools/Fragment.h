// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The samples of a fragment (`moof`): where its headers say that they lie, and how they say so
// when the movie atom before or behind them has changed.

#include "tools/PlaceMap.h"
#include "tools/TrackMedia.h"

/// Samples of one track that lie one behind the other.
struct SampleRun
{
    RawAtom *atom = nullptr; ///< Its `trun`.
    uint64_t position = 0;
    uint64_t size = 0;
};

/// One track's part of a fragment.
struct TrackFragment
{
    RawAtom *atom = nullptr; ///< Its `traf`.
    uint32_t track = 0;
    uint64_t base = 0; ///< What the places in it count from.
    bool hasOwnBase = false; ///< One that is said, absolute in the file.
    bool countsFromFragment = false; ///< Where nothing is said; else from the media before.
    bool isElsewhere = false; ///< Its media lie in another file.
    std::vector<SampleRun> runs;
};

/// Takes a fragment at `position` apart.
std::vector<TrackFragment> readFragment(RawAtom *moof, uint64_t position,
                                        const std::map<uint32_t, TrackMedia> &tracks);

/// Where the auxiliary information of a track fragment lies.
std::vector<uint64_t> auxiliaryPlaces(const TrackFragment &fragment);

/// Changes what leads to samples that move. False where their fields cannot say where to, or where
/// the samples of a run do not stay together.
bool relocateFragment(RawAtom *moof, uint64_t position,
                      const std::map<uint32_t, TrackMedia> &tracks, const PlaceMap &places);
