// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_svhd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cstring>

namespace Tavro::MovParserLib {

MovAtom::Error sphericalVideoHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    metadata_source.clear();
    // The terminator alone ends the text, also behind the atom's declared end.
    const uint8_t *text = buffer.GetData() + buffer.Tell();
    const void *end = std::memchr(text, 0, buffer.BytesLeft());
    if (!end)
        return scope.Fail();
    const auto length = static_cast<uint64_t>(static_cast<const uint8_t *>(end) - text);
    MOV_READ(scope, ReadText(buffer, length, &metadata_source));
    if (!buffer.ReadInPlace(1))
        return scope.Fail();
    return scope.Finish(size);
}

MovAtom::Error sphericalVideoHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteBytes(buffer, metadata_source.c_str(), metadata_source.size() + 1);
}

void sphericalVideoHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "sphericalVideoHeaderAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "writingtool: '%s'", metadata_source.c_str());
}

uint64_t sphericalVideoHeaderAtom::GetSize() const
{
    return MovFullAtom::GetSize() + metadata_source.size() + 1;
}

MovAtom::Error sphericalVideoHeaderAtom::SetMetadataSource(const std::string &text)
{
    const std::string terminated = text.c_str();
    if (terminated.empty())
        return ERROR_INVALID_ARG;
    metadata_source = terminated;
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
