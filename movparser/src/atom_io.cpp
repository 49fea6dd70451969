// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_io.h"

namespace Tavro::MovParserLib {

MovAtom::Error ReadText(FileBuffer &buffer, uint64_t length, std::string *text)
{
    const uint8_t *bytes = buffer.ReadInPlace(length);
    if (!bytes)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    return MakeRoom(buffer, length,
                    [&] { text->assign(reinterpret_cast<const char *>(bytes), length); });
}

MovAtom::Error ReadCountedString(FileBuffer &buffer, std::string *text)
{
    uint8_t length = 0;
    if (ReadNumber(buffer, &length) != MovAtom::ERROR_OKAY)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    return ReadText(buffer, length, text);
}

MovAtom::Error WriteCountedString(FileBuffer &buffer, const std::string &text)
{
    if (text.size() > UINT8_MAX)
        return MovAtom::ERROR_ATOM_WRITE_FAILED;
    MOV_WRITE(WriteNumber(buffer, static_cast<uint8_t>(text.size())));
    return WriteBytes(buffer, text.data(), text.size());
}

} // namespace Tavro::MovParserLib
