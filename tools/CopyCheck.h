// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Reads a tagged copy back before it gets its name: whatever went wrong on the way, a film that
// does not play is worse than none.

#include "tools/VideoTrackTags.h"

/// What is wrong with a copy of the film behind the descriptor `original`, or nothing: whether it
/// says what was asked for and else what the original says, and leads to the same samples. May
/// throw TooManyAtoms, or std::bad_alloc when memory ends.
QString faultOfCopy(int original, int copy, const MovieTags &tags);
