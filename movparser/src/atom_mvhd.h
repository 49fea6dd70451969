// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `mvhd`: the units of time, the duration and the geometry of a movie.

#include "movparser/src/mov_full_dated_atom.h"
#include "movparser/src/transform_matrix.h"

#include <array>
#include <tuple>

namespace Tavro::MovParserLib {

class MovieHeaderAtom : public MovFullDatedAtom
{
public:
    static constexpr uint32_t kType = FourCC("mvhd");

    MovieHeaderAtom()
        : MovFullDatedAtom(kType)
    { }

    using MovFullDatedAtom::Read;
    using MovFullDatedAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    uint32_t timeScale = 600; ///< Units in a second.
    uint32_t duration = 0; ///< In those units.
    uint32_t preferredRate = 0x10000; ///< 16.16.
    uint16_t preferredVolume = 0x100; ///< 8.8.
    std::array<uint8_t, 10> reserved = {};
    TransformMatrix matrix = kIdentityMatrix;
    uint32_t previewTime = 0;
    uint32_t previewDuration = 0;
    uint32_t posterTime = 0;
    uint32_t selectionTime = 0;
    uint32_t selectionDuration = 0;
    uint32_t currentTime = 0;
    uint32_t nextTrackId = 1; ///< For the track that is added next.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.timeScale, self.duration, self.preferredRate, self.preferredVolume,
                        self.reserved, self.matrix, self.previewTime, self.previewDuration,
                        self.posterTime, self.selectionTime, self.selectionDuration,
                        self.currentTime, self.nextTrackId);
    }
};

} // namespace Tavro::MovParserLib
