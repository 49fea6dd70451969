// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `udta`: what the camera says about a movie.

#include "movparser/src/atom_children.h"

namespace Tavro::MovParserLib {

class UserDataAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("udta");

    UserDataAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;

    /// The string, or null when there is none.
    [[nodiscard]] Error GetFirmware(const char **text) const;

    UnparsedMap unparsed;
};

} // namespace Tavro::MovParserLib
