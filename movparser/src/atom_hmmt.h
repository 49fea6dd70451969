// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `HMMT`: the moments that were marked while the camera was recording.

#include "movparser/src/mov_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

class TavroKeymarkTagAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("HMMT");

    TavroKeymarkTagAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Tags that one recording can have.
    static constexpr uint32_t kMaxTags = 100;

    uint32_t GetCount() const { return static_cast<uint32_t>(m_tags.size()); }

    /// The time of a tag in milliseconds from the start of the recording. An index equal to the
    /// count gives 0, one above it ERROR_INVALID_ARG.
    [[nodiscard]] Error GetTag(uint32_t index, uint32_t *milliseconds) const;

    /// Replaces all tags. A negative count and one above 99 mean 100 values. ERROR_INVALID_ARG for
    /// a count of 0 or a null pointer.
    [[nodiscard]] Error SetTags(int count, const uint32_t *milliseconds);

private:
    std::vector<uint32_t> m_tags;
};

} // namespace Tavro::MovParserLib
