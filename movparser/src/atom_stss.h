// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stss`: the samples that decoding can begin with.

#include "movparser/src/atom_table.h"
#include "movparser/src/mov_full_atom.h"

namespace Tavro::MovParserLib {

class SyncSampleAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("stss");

    SyncSampleAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    [[nodiscard]] Error AddSample(uint32_t number);

    /// Sample numbers count from 1. Fast in a table in ascending order, as files have it; one that
    /// is not is walked.
    bool Contains(uint32_t number) const;

    AtomTable<uint32_t> sampleNumbers;

private:
    /// What is known about the order of a table, as far as it has been looked at.
    struct Order
    {
        uint64_t version = 0; ///< Of the table.
        size_t checked = 1; ///< So many entries are in order.
        bool isAscending = true;
    };

    bool IsAscending() const;

    mutable Order m_order;
};

} // namespace Tavro::MovParserLib
