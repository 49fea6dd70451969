// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_elst.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error EditListAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    MOV_READ(scope, entries.Read(buffer, count));
    return scope.Finish(size);
}

MovAtom::Error EditListAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, static_cast<uint32_t>(entries.size())));
    return entries.Write(buffer);
}

void EditListAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "EditListAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Edit List Table: (TrackDuration, MediaTime, MediaRate) ");
    PrintLine(out, block.Depth(), "NumberOfEntries In Edit List Table: %zu", entries.size());
    for (const EditListTableEntry entry : entries)
        PrintLine(out, block.Depth(), "%d, %d, %f", entry.trackDuration, entry.mediaTime,
                  entry.mediaRate / 65536.0);
}

uint64_t EditListAtom::GetSize() const
{
    return MovFullAtom::GetSize() + sizeof(uint32_t) + entries.SizeInFile();
}

} // namespace Tavro::MovParserLib
