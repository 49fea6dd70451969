// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stco.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cinttypes>

namespace Tavro::MovParserLib {

MovAtom::Error ChunkOffsetAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    const uint32_t expected = PeekAtomType(buffer) == kWideType ? kWideType : kType;
    MOV_READ(scope, MovFullAtom::Read(buffer, expected));
    MOV_READ(scope, ReadNumber(buffer, &count));
    MOV_READ(scope,
             expected == kWideType ? offsets.Read(buffer, count)
                                   : offsets.ReadAs<uint32_t>(buffer, count));
    return scope.Finish(size);
}

MovAtom::Error ChunkOffsetAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(offsets.size())));
    if (type == kWideType)
        return offsets.Write(buffer);
    for (const uint64_t offset : offsets) {
        if (offset > UINT32_MAX)
            return ERROR_ATOM_WRITE_FAILED;
        MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(offset)));
    }
    return ERROR_OKAY;
}

void ChunkOffsetAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "ChunkOffsetAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "NumberOfEntries: %d", static_cast<int>(offsets.size()));
    PrintTable(out, block.Depth(), "ChunkOffsetTable: ", offsets,
               [out](uint64_t offset) { PrintText(out, "%012" PRIu64 "  ", offset); });
}

uint64_t ChunkOffsetAtom::GetSize() const
{
    return MovFullAtom::GetSize() + sizeof(uint32_t) + offsets.size() * SizeOfOffset();
}

MovAtom::Error ChunkOffsetAtom::AddChunk(uint64_t fileOffset)
{
    return offsets.push_back(fileOffset) ? ERROR_OKAY : ERROR_MEM_ALLOC;
}

MovAtom::Error ChunkOffsetAtom::GetOffset(uint32_t chunkNumber, uint64_t *fileOffset) const
{
    if (!fileOffset || chunkNumber == 0 || chunkNumber > offsets.size())
        return ERROR_INVALID_ARG;
    *fileOffset = offsets[chunkNumber - 1];
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
