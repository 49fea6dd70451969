// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stts.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>

namespace Tavro::MovParserLib {

MovAtom::Error TimeToSampleAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    MOV_READ(scope, entries.Read(buffer, count));
    return scope.Finish(size);
}

MovAtom::Error TimeToSampleAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(entries.size())));
    return entries.Write(buffer);
}

void TimeToSampleAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TimeToSampleAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "NumberOfEntries: %d", static_cast<int>(entries.size()));
    PrintLine(out, block.Depth(), "TimeToSampleTable: (Sample Count, Sample Duration)");
    PrintTable(out, block.Depth(), "", entries, [out](const auto &entry) {
        PrintText(out, "%d,%d  ", entry.sampleCount, entry.sampleDuration);
    });
}

uint64_t TimeToSampleAtom::GetSize() const
{
    return MovFullAtom::GetSize() + sizeof(uint32_t) + entries.SizeInFile();
}

MovAtom::Error TimeToSampleAtom::AddEntry(uint32_t count, uint32_t duration)
{
    // A run that would count more than its field holds begins another.
    const bool longer = !entries.empty() && entries.back().sampleDuration == duration
        && count <= UINT32_MAX - entries.back().sampleCount;
    const bool added = longer
        ? entries.Set(entries.size() - 1, {entries.back().sampleCount + count, duration})
        : entries.push_back({count, duration});
    return added ? ERROR_OKAY : ERROR_MEM_ALLOC;
}

MovAtom::Error TimeToSampleAtom::GetSampleTime(uint32_t index, uint64_t *time,
                                               uint32_t *duration) const
{
    if (!time || !duration || entries.empty())
        return ERROR_INVALID_ARG;
    m_cursor.Follow(entries);
    if (index < m_cursor.samples)
        m_cursor.Rewind();
    while (m_cursor.entry < entries.size()) {
        const TimeToSampleTableEntry entry = entries[m_cursor.entry];
        if (index - m_cursor.samples < entry.sampleCount) {
            *time = m_cursor.time + (index - m_cursor.samples) * entry.sampleDuration;
            *duration = entry.sampleDuration;
            return ERROR_OKAY;
        }
        m_cursor.Pass(entry.sampleCount, entry.sampleDuration);
    }
    return ERROR_INVALID_RET_VAL;
}

MovAtom::Error TimeToSampleAtom::GetSampleIndex(uint64_t time, uint32_t *index) const
{
    if (!index || entries.empty())
        return ERROR_INVALID_ARG;
    m_cursor.Follow(entries);
    if (time < m_cursor.time)
        m_cursor.Rewind();
    while (m_cursor.entry < entries.size()) {
        const TimeToSampleTableEntry entry = entries[m_cursor.entry];
        const uint64_t length = uint64_t(entry.sampleCount) * entry.sampleDuration;
        if (time - m_cursor.time < length) {
            const uint64_t number =
                m_cursor.samples + (time - m_cursor.time) / entry.sampleDuration;
            if (number > UINT32_MAX)
                return ERROR_INVALID_RET_VAL; // no track counts so many
            *index = static_cast<uint32_t>(number);
            return ERROR_OKAY;
        }
        m_cursor.Pass(entry.sampleCount, entry.sampleDuration);
    }
    return ERROR_INVALID_RET_VAL;
}

MovAtom::Error TimeToSampleAtom::GetDurationRange(uint32_t *shortest, uint32_t *longest) const
{
    if (!shortest || !longest || entries.empty())
        return ERROR_INVALID_ARG;
    *shortest = *longest = entries.front().sampleDuration;
    for (const TimeToSampleTableEntry entry : entries) {
        *shortest = std::min(*shortest, entry.sampleDuration);
        *longest = std::max(*longest, entry.sampleDuration);
    }
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
