// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stss.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>

namespace Tavro::MovParserLib {

MovAtom::Error SyncSampleAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    MOV_READ(scope, sampleNumbers.Read(buffer, count));
    return scope.Finish(size);
}

MovAtom::Error SyncSampleAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(sampleNumbers.size())));
    return sampleNumbers.Write(buffer);
}

void SyncSampleAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SyncSampleAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "NumberOfEntries: %d", static_cast<int>(sampleNumbers.size()));
    PrintTable(out, block.Depth(), "SyncSampleTable: ", sampleNumbers,
               [out](uint32_t number) { PrintText(out, "%d  ", number); });
}

uint64_t SyncSampleAtom::GetSize() const
{
    return MovFullAtom::GetSize() + sizeof(uint32_t) + sampleNumbers.SizeInFile();
}

MovAtom::Error SyncSampleAtom::AddSample(uint32_t number)
{
    return sampleNumbers.push_back(number) ? ERROR_OKAY : ERROR_MEM_ALLOC;
}

// The table is in ascending order. In a file that breaks this some samples count as no sync
// samples; a search that forgives it would cost a walk over the table for each sample.
bool SyncSampleAtom::Contains(uint32_t number) const
{
    return std::binary_search(sampleNumbers.begin(), sampleNumbers.end(), number);
}

} // namespace Tavro::MovParserLib
