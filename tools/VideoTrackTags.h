// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Puts spherical and stereo metadata into the bytes of a movie atom.

#include "tools/RawAtom.h"

#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <string>

/// What to write; what is not set stays as the film has it.
struct MovieTags
{
    std::optional<uint32_t> projection; ///< As the library's enumeration.
    std::optional<uint32_t> stereoMode; ///< 0 mono, 1 left-right, 2 top-bottom.
    std::optional<std::array<float, 3>> pose; ///< Yaw, pitch, roll in degrees.
    std::optional<std::string> tool; ///< The program that wrote the film.
};

/// Tags the first video track. The library's atom classes make the atoms that the tags speak of, in
/// both generations of the metadata; all other bytes of the movie stay. False with the reason in
/// `why`. `lost` gets the names of the elements and atoms that stood in those and are no more.
bool tagFirstVideoTrack(RawAtom *movie, const MovieTags &tags, QString *why, QStringList *lost);
