// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_unparsed.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>
#include <new>

namespace Tavro::MovParserLib {

UnparsedAtom::UnparsedAtom(const UnparsedAtom &other)
    : UnparsedAtom()
{
    *this = other;
}

UnparsedAtom &UnparsedAtom::operator=(const UnparsedAtom &other)
{
    if (this == &other)
        return *this;
    MovAtom::operator=(other);
    Allocate(0);
    if (other.data && size > GetHeaderSize() && Allocate(size - GetHeaderSize()) == ERROR_OKAY) {
        const uint64_t common = std::min(dataSize, other.dataSize);
        std::memcpy(data.get(), other.data.get(), common);
        std::memset(data.get() + common, 0, dataSize - common);
    }
    return *this;
}

MovAtom::Error UnparsedAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    Allocate(0);
    const Error error = MovAtom::Read(buffer);
    if (error != ERROR_OKAY)
        return error;
    const uint64_t preamble = scope.Consumed();
    // A size below the preamble would wrap; it is malformed like one beyond the buffer.
    if (size < preamble || size - preamble > buffer.BytesLeft())
        return scope.Fail();
    const uint8_t *bytes = buffer.ReadInPlace(size - preamble);
    if (!bytes || Allocate(size - preamble) != ERROR_OKAY)
        return scope.Fail();
    if (dataSize != 0)
        std::memcpy(data.get(), bytes, dataSize);
    return scope.Finish(size);
}

MovAtom::Error UnparsedAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return dataSize != 0 ? WriteBytes(buffer, data.get(), dataSize) : ERROR_OKAY;
}

void UnparsedAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "UnparsedAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintIndent(out, block.Depth());
    PrintText(out, "Data: ");
    for (uint64_t i = 0; i < dataSize; ++i)
        PrintText(out, "%02x ", data[i]);
    PrintText(out, "\n");
}

uint64_t UnparsedAtom::GetSize() const
{
    return GetHeaderSize() + dataSize;
}

MovAtom::Error UnparsedAtom::GetData(uint8_t *dst, uint64_t capacity, uint64_t *outSize) const
{
    if (!outSize)
        return ERROR_INVALID_ARG;
    if (dst && capacity != 0) {
        if (capacity < dataSize)
            return ERROR_INVALID_ARG;
        if (dataSize != 0)
            std::memcpy(dst, data.get(), dataSize);
    }
    *outSize = dataSize;
    return ERROR_OKAY;
}

MovAtom::Error UnparsedAtom::Allocate(uint64_t bytes)
{
    data.reset(bytes != 0 ? new (std::nothrow) uint8_t[bytes] : nullptr);
    dataSize = data ? bytes : 0;
    return dataSize == bytes ? ERROR_OKAY : ERROR_MEM_ALLOC;
}

} // namespace Tavro::MovParserLib
