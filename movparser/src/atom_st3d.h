// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `st3d`: how the pictures of the two eyes share a frame.

#include "movparser/src/mov_full_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class stereoVideoAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("st3d");

    stereoVideoAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// As it stands in the file: 0 mono, 1 top-bottom, 2 left-right.
    uint8_t stereo_mode = 0;

    template <class Self> static auto Fields(Self &self) { return std::tie(self.stereo_mode); }

    /// 0 none, 1 left-right, 2 top-bottom: the file's numbers of the last two, swapped.
    uint32_t GetStereoMode() const;

    /// Any value but 1 and 2 stores mono.
    void SetStereoMode(uint32_t mode);
};

} // namespace Tavro::MovParserLib
