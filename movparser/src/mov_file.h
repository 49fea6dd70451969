// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A file that holds a movie.

#include "movparser/src/atom_moov.h"
#include "movparser/src/mov_parser.h"

namespace Tavro::MovParserLib {

class MovFile : public MovParser
{
public:
    /// The atom tree, for what the readers of a file do not answer themselves.
    const MovieAtom &Movie() const { return movie; }

    MovieAtom &Movie() { return movie; }

protected:
    MovieAtom movie;
};

} // namespace Tavro::MovParserLib
