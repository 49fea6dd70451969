// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_ctts.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error CompositionOffsetsAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    MOV_READ(scope, entries.Read(buffer, count));
    return scope.Finish(size);
}

MovAtom::Error CompositionOffsetsAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(entries.size())));
    return entries.Write(buffer);
}

void CompositionOffsetsAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "CompositionOffsetsAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "NumberOfEntries: %d", static_cast<int>(entries.size()));
    PrintLine(out, block.Depth(), "CompositionOffsetsTable: (Sample Count, Sample Delta)");
    PrintTable(out, block.Depth(), "", entries, [out](const auto &entry) {
        PrintText(out, "%d,%d  ", entry.sampleCount, entry.sampleDelta);
    });
}

uint64_t CompositionOffsetsAtom::GetSize() const
{
    return MovFullAtom::GetSize() + sizeof(uint32_t) + entries.SizeInFile();
}

MovAtom::Error CompositionOffsetsAtom::AddEntry(uint32_t count, int32_t delta)
{
    // A run that would count more than its field holds begins another.
    const bool longer = !entries.empty() && entries.back().sampleDelta == delta
        && count <= UINT32_MAX - entries.back().sampleCount;
    const bool added = longer
        ? entries.Set(entries.size() - 1, {entries.back().sampleCount + count, delta})
        : entries.push_back({count, delta});
    return added ? ERROR_OKAY : ERROR_MEM_ALLOC;
}

MovAtom::Error CompositionOffsetsAtom::GetSampleDelta(uint32_t index, int32_t *delta) const
{
    if (!delta || entries.empty())
        return ERROR_INVALID_ARG;
    m_cursor.Follow(entries);
    if (index < m_cursor.samples)
        m_cursor.Rewind();
    while (m_cursor.entry < entries.size()) {
        const CompositionOffsetsTableEntry entry = entries[m_cursor.entry];
        if (index - m_cursor.samples < entry.sampleCount) {
            *delta = entry.sampleDelta;
            return ERROR_OKAY;
        }
        m_cursor.Pass(entry.sampleCount, 0);
    }
    return ERROR_INVALID_RET_VAL;
}

} // namespace Tavro::MovParserLib
