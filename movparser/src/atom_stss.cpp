// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stss.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

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

bool SyncSampleAtom::Contains(uint32_t number) const
{
    size_t first = 0;
    size_t last = sampleNumbers.size();
    if (IsAscending()) {
        while (last - first > 1) {
            const size_t middle = first + (last - first) / 2;
            (sampleNumbers[middle] <= number ? first : last) = middle;
        }
    }
    while (first < last && sampleNumbers[first] != number)
        ++first;
    return first < last;
}

bool SyncSampleAtom::IsAscending() const
{
    if (m_order.version != sampleNumbers.Version())
        m_order = {sampleNumbers.Version(), 1, true};
    for (; m_order.isAscending && m_order.checked < sampleNumbers.size(); ++m_order.checked)
        m_order.isAscending = sampleNumbers[m_order.checked - 1] <= sampleNumbers[m_order.checked];
    return m_order.isAscending;
}

} // namespace Tavro::MovParserLib
