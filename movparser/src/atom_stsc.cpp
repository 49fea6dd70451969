// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stsc.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error SampleToChunkAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    MOV_READ(scope, entries.Read(buffer, count));
    return scope.Finish(size);
}

MovAtom::Error SampleToChunkAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(entries.size())));
    return entries.Write(buffer);
}

void SampleToChunkAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SampleToChunkAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "NumberOfEntries: %d", static_cast<int>(entries.size()));
    PrintLine(out, block.Depth(),
              "SampleToChunkTable: (FirstChunk, SamplesPerChunk, SampleDescriptionID)");
    PrintTable(out, block.Depth(), "", entries, [out](const auto &entry) {
        PrintText(out, "%d,%d,%d  ", entry.firstChunk, entry.samplesPerChunk,
                  entry.sampleDescriptionId);
    });
}

uint64_t SampleToChunkAtom::GetSize() const
{
    return MovFullAtom::GetSize() + sizeof(uint32_t) + entries.SizeInFile();
}

MovAtom::Error SampleToChunkAtom::AddEntry(uint32_t firstChunk, uint32_t samplesPerChunk,
                                           uint32_t sampleDescriptionId)
{
    if (!entries.empty() && entries.back().samplesPerChunk == samplesPerChunk
        && entries.back().sampleDescriptionId == sampleDescriptionId)
        return ERROR_OKAY;
    return entries.push_back({firstChunk, samplesPerChunk, sampleDescriptionId}) ? ERROR_OKAY
                                                                                 : ERROR_MEM_ALLOC;
}

MovAtom::Error SampleToChunkAtom::GetChunk(uint32_t index, SampleChunk *chunk) const
{
    if (!chunk)
        return ERROR_INVALID_ARG;
    if (entries.empty())
        return ERROR_MALFORMED_ATOM;
    m_cursor.Follow(entries);
    if (index < m_cursor.samples)
        m_cursor.Rewind();
    // The last run has no end, so the walk stops there at the latest.
    while (m_cursor.entry + 1 < entries.size()) {
        const SampleToChunkTableEntry run = entries[m_cursor.entry];
        const uint32_t next = entries[m_cursor.entry + 1].firstChunk;
        const uint64_t chunks = next > run.firstChunk ? next - run.firstChunk : 0;
        const uint64_t samples = chunks * run.samplesPerChunk;
        if (index - m_cursor.samples < samples)
            break;
        m_cursor.Pass(samples, 0);
    }
    const SampleToChunkTableEntry run = entries[m_cursor.entry];
    if (run.samplesPerChunk == 0)
        return ERROR_MALFORMED_ATOM; // there is nothing to divide by
    const uint64_t rest = index - m_cursor.samples;
    chunk->number = static_cast<uint32_t>(run.firstChunk + rest / run.samplesPerChunk);
    chunk->sample = static_cast<uint32_t>(rest % run.samplesPerChunk);
    chunk->sampleDescriptionId = run.sampleDescriptionId;
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
