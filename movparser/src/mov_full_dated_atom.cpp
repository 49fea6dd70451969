// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/mov_full_dated_atom.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <ctime>

namespace Tavro::MovParserLib {

namespace {

std::time_t LocalStartOf1904()
{
    std::tm epoch = {};
    epoch.tm_year = 4;
    epoch.tm_mday = 1;
    return std::mktime(&epoch);
}

uint32_t SecondsSince1904()
{
    // Once: mktime looks at the time zone's file each time, and every movie and track asks.
    static const std::time_t kEpoch = LocalStartOf1904();
    return static_cast<uint32_t>(static_cast<int64_t>(std::difftime(std::time(nullptr), kEpoch)));
}

} // namespace

MovFullDatedAtom::MovFullDatedAtom(uint32_t type_)
    : MovFullAtom(type_)
    , creationTime(SecondsSince1904())
    , modificationTime(creationTime)
{ }

MovAtom::Error MovFullDatedAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer));
    MOV_READ(scope, ReadFields(buffer, std::tie(creationTime, modificationTime)));
    return ERROR_OKAY;
}

MovAtom::Error MovFullDatedAtom::Read(FileBuffer &buffer, uint32_t expectedType)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, expectedType));
    MOV_READ(scope, ReadFields(buffer, std::tie(creationTime, modificationTime)));
    return ERROR_OKAY;
}

MovAtom::Error MovFullDatedAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, std::tie(creationTime, modificationTime));
}

void MovFullDatedAtom::PrintToString(std::string *out, uint32_t depth) const
{
    MovFullAtom::PrintToString(out, depth);
    PrintLine(out, depth, "Creation Time: %u", creationTime);
    PrintLine(out, depth, "Modification Time: %u", modificationTime);
}

uint64_t MovFullDatedAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(std::tie(creationTime, modificationTime));
}

MovFullDatedAtom &MovFullDatedAtom::operator=(const MovFullDatedAtom &other)
{
    MovFullAtom::operator=(other);
    creationTime = other.creationTime;
    modificationTime = other.modificationTime;
    return *this;
}

} // namespace Tavro::MovParserLib
