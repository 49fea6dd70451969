// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `stco` and `co64`: where each chunk lies in the file.

#include "movparser/src/atom_table.h"
#include "movparser/src/mov_full_atom.h"

namespace Tavro::MovParserLib {

/// One class for both types: the type tells the width of the offsets in the file, in memory they
/// have 64 bits.
class ChunkOffsetAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("stco");

    ChunkOffsetAtom()
        : MovFullAtom(kType)
    { }

    static constexpr uint32_t kWideType = FourCC("co64");

    /// Takes either type.
    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    [[nodiscard]] Error AddChunk(uint64_t fileOffset);

    /// Chunk numbers count from 1; others than the table's are ERROR_INVALID_ARG.
    [[nodiscard]] Error GetOffset(uint32_t chunkNumber, uint64_t *fileOffset) const;

    AtomTable<uint64_t> offsets;

private:
    uint64_t SizeOfOffset() const { return type == kWideType ? 8 : 4; }
};

} // namespace Tavro::MovParserLib
