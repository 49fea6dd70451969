// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_hmmt.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>

namespace Tavro::MovParserLib {

MovAtom::Error TavroKeymarkTagAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t count = 0;
    m_tags.clear();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadNumber(buffer, &count));
    MOV_READ(scope, ReadTable(buffer, std::min(count, kMaxTags), &m_tags));
    return scope.Finish(size);
}

MovAtom::Error TavroKeymarkTagAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteNumber(buffer, GetCount()));
    return WriteTable(buffer, m_tags);
}

void TavroKeymarkTagAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "Keymark Tags");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "COUNT: %u", GetCount());
    for (const uint32_t tag : m_tags)
        PrintLine(out, block.Depth(), "TAG: %i.%i sec ", tag / 1000, tag % 1000);
}

uint64_t TavroKeymarkTagAtom::GetSize() const
{
    return MovAtom::GetSize() + sizeof(uint32_t) * (1 + m_tags.size());
}

MovAtom::Error TavroKeymarkTagAtom::GetTag(uint32_t index, uint32_t *milliseconds) const
{
    if (!milliseconds || index > GetCount())
        return ERROR_INVALID_ARG;
    // The place behind the last tag passes the test too and reads as 0.
    *milliseconds = index < GetCount() ? m_tags[index] : 0;
    return ERROR_OKAY;
}

MovAtom::Error TavroKeymarkTagAtom::SetTags(int count, const uint32_t *milliseconds)
{
    if (count == 0 || !milliseconds)
        return ERROR_INVALID_ARG;
    const bool clamped = count < 0 || count >= static_cast<int>(kMaxTags);
    return OrNoMemory([&] {
        m_tags.assign(milliseconds,
                      milliseconds + (clamped ? kMaxTags : static_cast<uint32_t>(count)));
        return ERROR_OKAY;
    });
}

} // namespace Tavro::MovParserLib
