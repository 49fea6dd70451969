// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_dref.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error DataReference::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer));
    // A size that ends within the preamble would let the entries stand still. One that ends within
    // version and flags has the next entry overlap them, as everywhere.
    constexpr uint64_t kPreamble = 8;
    if (size < kPreamble)
        return scope.Fail();
    MOV_READ(scope, ReadBytes(buffer, scope.Remaining(size), &data));
    return scope.Finish(size);
}

MovAtom::Error DataReference::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteBytes(buffer, data.data(), data.size());
}

void DataReference::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "DataReference");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintTable(out, block.Depth(), "Data: ", data,
               [out](uint8_t byte) { PrintText(out, "%02x ", byte); });
}

uint64_t DataReference::GetSize() const
{
    return MovFullAtom::GetSize() + data.size();
}

MovAtom::Error DataReferenceAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    entries.clear();
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    for (uint32_t i = 0; i < count; ++i) {
        DataReference entry;
        MOV_READ(scope, entry.Read(buffer));
        MOV_READ(scope,
                 MakeRoom(buffer, sizeof entry, [&] { entries.push_back(std::move(entry)); }));
    }
    return scope.Finish(size);
}

MovAtom::Error DataReferenceAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(entries.size())));
    for (DataReference &entry : entries)
        MOV_WRITE(entry.Write(buffer));
    return ERROR_OKAY;
}

void DataReferenceAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "DataReferenceAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "NumberOfEntries: %zu", entries.size());
    for (const DataReference &entry : entries)
        entry.PrintToString(out, block.Depth());
}

uint64_t DataReferenceAtom::GetSize() const
{
    uint64_t bytes = MovFullAtom::GetSize() + sizeof(uint32_t);
    for (const DataReference &entry : entries)
        bytes += entry.GetSize();
    return bytes;
}

} // namespace Tavro::MovParserLib
