// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_children.h"

namespace Tavro::MovParserLib {

MovAtom::Error ReadUnparsed(FileBuffer &buffer, UnparsedMap *unparsed)
{
    UnparsedAtom atom;
    const MovAtom::Error error = atom.Read(buffer);
    if (error != MovAtom::ERROR_OKAY || unparsed->count(atom.GetType()) != 0)
        return error;
    constexpr uint64_t kNode = sizeof(UnparsedMap::value_type) + 4 * sizeof(void *);
    return MakeRoom(buffer, kNode + atom.DataSize(), [&] {
        const UnparsedAtom &copy = unparsed->emplace(atom.GetType(), atom).first->second;
        if (copy.DataSize() < atom.DataSize())
            throw std::bad_alloc(); // copying itself gives no code
    });
}

MovAtom::Error SkipUnparsed(FileBuffer &buffer)
{
    return UnparsedAtom().Read(buffer);
}

MovAtom::Error WriteUnparsed(FileBuffer &buffer, UnparsedMap *unparsed)
{
    for (auto &entry : *unparsed)
        MOV_WRITE(entry.second.Write(buffer));
    return MovAtom::ERROR_OKAY;
}

uint64_t SizeOfUnparsed(const UnparsedMap &unparsed)
{
    uint64_t bytes = 0;
    for (const auto &entry : unparsed)
        bytes += entry.second.GetSize();
    return bytes;
}

void PrintUnparsed(std::string *out, uint32_t depth, const UnparsedMap &unparsed)
{
    for (const auto &entry : unparsed)
        entry.second.PrintToString(out, depth);
}

ChildRange::ChildRange(const ReadScope &scope, uint64_t size)
    : m_buffer(scope.Buffer())
    , m_first(scope.Buffer().Tell())
    , m_length(scope.Remaining(size))
{ }

bool ChildRange::Find(uint32_t type) const
{
    static_cast<void>(m_buffer.Seek(static_cast<int64_t>(m_first), 0));
    return FindAtom(m_buffer, type, m_length) == MovAtom::ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
