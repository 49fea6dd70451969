// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/mov_atom.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cinttypes>
#include <cstdio>

namespace Tavro::MovParserLib {

MovAtom::Error MovAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t size32 = 0;
    MOV_READ(scope, ReadNumber(buffer, &size32));
    if (size32 == 0) {
        scope.Fail();
        return ERROR_ZERO_SIZE_ATOM;
    }
    MOV_READ(scope, ReadNumber(buffer, &type));
    size = size32;
    if (size32 == 1)
        MOV_READ(scope, ReadNumber(buffer, &size));
    return ERROR_OKAY;
}

MovAtom::Error MovAtom::Read(FileBuffer &buffer, uint32_t expectedType)
{
    const ReadScope scope(buffer);
    uint32_t size32 = 0;
    uint32_t found = 0;
    MOV_READ(scope, ReadNumber(buffer, &size32));
    MOV_READ(scope, ReadNumber(buffer, &found));
    type = found;
    if (found != expectedType) {
        scope.Fail();
        return ERROR_WRONG_ATOM_TYPE;
    }
    size = size32;
    if (size32 == 1)
        MOV_READ(scope, ReadNumber(buffer, &size));
    return ERROR_OKAY;
}

MovAtom::Error MovAtom::Write(FileBuffer &buffer)
{
    size = GetSize();
    const bool wide = size > UINT32_MAX;
    MOV_WRITE(WriteNumber(buffer, wide ? 1 : static_cast<uint32_t>(size)));
    MOV_WRITE(WriteNumber(buffer, type));
    if (wide)
        MOV_WRITE(WriteNumber(buffer, size));
    return ERROR_OKAY;
}

MovAtom &MovAtom::operator=(const MovAtom &other)
{
    size = other.size;
    type = other.type;
    return *this;
}

void MovAtom::Print(uint32_t depth) const
{
    std::string text;
    PrintToString(&text, depth);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void MovAtom::PrintToString(std::string *out, uint32_t depth) const
{
    PrintLine(out, depth, "Size: %" PRIu64, size);
    PrintFourCC(out, depth, "Type: ", type);
}

uint64_t MovAtom::GetSize() const
{
    return GetHeaderSize();
}

MovAtom::Error FindAtom(FileBuffer &buffer, uint32_t type, uint64_t limit)
{
    const ReadScope scope(buffer);
    if (limit == 0)
        return MovAtom::ERROR_ATOM_NOT_FOUND;
    const auto notFoundHere = [&] {
        scope.Fail();
        return MovAtom::ERROR_ATOM_NOT_FOUND;
    };
    uint64_t total = 0;
    for (;;) {
        uint32_t size32 = 0;
        uint32_t found = 0;
        if (ReadNumber(buffer, &size32) != MovAtom::ERROR_OKAY
            || ReadNumber(buffer, &found) != MovAtom::ERROR_OKAY)
            return notFoundHere();
        if (size32 == 0)
            return MovAtom::ERROR_ATOM_NOT_FOUND;
        if (found == type) {
            if (buffer.Seek(-8, 1) != FileBuffer::ERROR_OKAY)
                return notFoundHere();
            return total < limit ? MovAtom::ERROR_OKAY : MovAtom::ERROR_ATOM_NOT_FOUND;
        }
        uint64_t size = size32;
        uint64_t preamble = 8;
        if (size32 == 1) {
            preamble = 16;
            if (ReadNumber(buffer, &size) != MovAtom::ERROR_OKAY)
                return notFoundHere();
        }
        // A 64-bit size of 0 would lead the search back to this atom for ever, and with any other
        // size below the preamble's it would take bytes of the preamble for the next atom: nothing
        // behind it can be found.
        if (size < preamble || size - preamble > INT64_MAX
            || buffer.Seek(static_cast<int64_t>(size - preamble), 1) != FileBuffer::ERROR_OKAY)
            return notFoundHere();
        total += size;
        if (total >= limit)
            return MovAtom::ERROR_ATOM_NOT_FOUND;
    }
}

uint32_t PeekAtomType(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint32_t size32 = 0;
    uint32_t type = 0;
    if (ReadNumber(buffer, &size32) != MovAtom::ERROR_OKAY || size32 == 0
        || ReadNumber(buffer, &type) != MovAtom::ERROR_OKAY)
        type = 0;
    scope.Fail();
    return type;
}

} // namespace Tavro::MovParserLib
