// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `tkhd`: a track's number, duration and place in the picture.

#include "movparser/src/mov_full_dated_atom.h"
#include "movparser/src/transform_matrix.h"

#include <tuple>

namespace Tavro::MovParserLib {

class TrackHeaderAtom : public MovFullDatedAtom
{
public:
    static constexpr uint32_t kType = FourCC("tkhd");

    TrackHeaderAtom()
        : MovFullDatedAtom(kType)
    { }

    using MovFullDatedAtom::Read;
    using MovFullDatedAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t trackId = 0; ///< From 1; 0 is no track.
    uint32_t reserved1 = 0;
    uint32_t duration = 0; ///< In the movie's units of time.
    uint64_t reserved2 = 0;
    uint16_t layer = 0;
    uint16_t alternateGroup = 0;
    uint16_t volume = 0; ///< 8.8.
    uint16_t reserved3 = 0;
    TransformMatrix matrix = kIdentityMatrix;
    uint32_t width = 0; ///< 16.16.
    uint32_t height = 0; ///< 16.16.

    /// Where the atom stood in the buffer that it was read from, the low 32 bits.
    uint32_t bufferPosition = 0;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.trackId, self.reserved1, self.duration, self.reserved2, self.layer,
                        self.alternateGroup, self.volume, self.reserved3, self.matrix, self.width,
                        self.height);
    }
};

} // namespace Tavro::MovParserLib
