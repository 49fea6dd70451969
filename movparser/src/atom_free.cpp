// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_free.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>
#include <cassert>
#include <cinttypes>

namespace Tavro::MovParserLib {

FreeAtom::FreeAtom(unsigned long totalSizeIncludingPreamble)
    : FreeAtom()
{
    assert(totalSizeIncludingPreamble >= 8);
    size = totalSizeIncludingPreamble;
    freePayloadSize = size - GetHeaderSize();
}

MovAtom::Error FreeAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer));
    return ERROR_OKAY;
}

MovAtom::Error FreeAtom::Write(FileBuffer &buffer)
{
    static constexpr uint8_t kZeros[256] = {};
    MOV_WRITE(MovAtom::Write(buffer));
    for (uint64_t left = freePayloadSize; left != 0;) {
        const uint64_t block = std::min<uint64_t>(left, sizeof kZeros);
        MOV_WRITE(WriteBytes(buffer, kZeros, block));
        left -= block;
    }
    return ERROR_OKAY;
}

void FreeAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "FreeAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Free Payload Size: %" PRIu64, freePayloadSize);
    // A picture of the space: one blank a byte.
    for (uint64_t left = freePayloadSize; out && left != 0;) {
        const uint64_t row = std::min<uint64_t>(left, 25);
        PrintIndent(out, block.Depth());
        out->append(row, ' ').push_back('\n');
        left -= row;
    }
}

uint64_t FreeAtom::GetSize() const
{
    return MovAtom::GetSize() + freePayloadSize;
}

MovAtom::Error FreeAtom::SetSize(unsigned long totalSizeIncludingPreamble)
{
    assert(totalSizeIncludingPreamble >= 8);
    if (totalSizeIncludingPreamble < 9)
        return ERROR_INVALID_ARG;
    size = totalSizeIncludingPreamble;
    freePayloadSize = size - GetHeaderSize();
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
