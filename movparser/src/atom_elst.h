// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `elst`: which stretches of the media a track plays.

#include "movparser/src/atom_table.h"
#include "movparser/src/mov_full_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class EditListTableEntry
{
public:
    EditListTableEntry() = default;

    EditListTableEntry(uint32_t trackDuration_, int32_t mediaTime_, uint32_t mediaRate_)
        : trackDuration(trackDuration_)
        , mediaTime(mediaTime_)
        , mediaRate(mediaRate_)
    { }

    uint32_t trackDuration = 0; ///< In the movie's units of time.
    int32_t mediaTime = 0; ///< In the media's units; negative for an empty edit.
    uint32_t mediaRate = 0x10000; ///< 16.16.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.trackDuration, self.mediaTime, self.mediaRate);
    }
};

class EditListAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("elst");

    EditListAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    AtomTable<EditListTableEntry> entries;
};

} // namespace Tavro::MovParserLib
