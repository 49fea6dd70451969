// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stsz`: the size of each sample.

#include "movparser/src/atom_table.h"
#include "movparser/src/mov_full_atom.h"

namespace Tavro::MovParserLib {

class SampleSizeAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("stsz");

    SampleSizeAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// One size for all samples, or one entry a sample.
    ///
    /// The first sample sets the uniform size, a later one of another size turns it into a table.
    /// A size of 0 is ERROR_INVALID_ARG: it stands for "there is a table".
    [[nodiscard]] Error AddSample(uint32_t bytes);

    /// `constant` (may be null) tells whether all samples have this size.
    [[nodiscard]] Error GetSampleSize(uint32_t index, uint32_t *bytes, bool *constant) const;

    uint32_t uniformSize = 0; ///< 0 when there is a table.
    uint32_t sampleCount = 0;
    AtomTable<uint32_t> sizes;
};

} // namespace Tavro::MovParserLib
