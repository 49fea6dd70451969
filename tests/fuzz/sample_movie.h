// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Movies with every kind of track and atom, made by the library's own classes.

#include "movparser/src/atom_moov.h"

/// One track each of video, sound, time code, text and telemetry, and the maker's user data.
Tavro::MovParserLib::MovieAtom fullMovie();

/// A single video track whose spherical metadata are of the older form only.
Tavro::MovParserLib::MovieAtom legacyMovie();
