// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stsd`: what the samples of a track are.

#include "movparser/src/mov_full_atom.h"

namespace Tavro::MovParserLib {

class SampleDescriptionAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("stsd");

    SampleDescriptionAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;

    /// The first video entry's; ERROR_INVALID_RET_VAL without one.
    [[nodiscard]] Error GetFrameSize(uint32_t *width, uint32_t *height) const;

    /// Makes the only entry of a track of the kind.
    [[nodiscard]] Error AddVideoDescription(uint32_t format, uint16_t width, uint16_t height);
    [[nodiscard]] Error AddSoundDescription(uint32_t format, uint32_t channels, double rate);

    uint32_t mediaType = 0; ///< The track's handler type, set by the owner before Read().
};

} // namespace Tavro::MovParserLib
