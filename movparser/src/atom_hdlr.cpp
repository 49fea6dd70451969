// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_hdlr.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

HandlerReferenceAtom::HandlerReferenceAtom(uint32_t type_, uint32_t subtype,
                                           const std::string &name_)
    : HandlerReferenceAtom()
{
    componentType = type_;
    componentSubtype = subtype;
    hasCountedName = type_ == kMediaHandler || type_ == kDataHandler;
    SetName(name_);
}

MovAtom::Error HandlerReferenceAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    MOV_READ(scope, ReadName(buffer, scope.Remaining(size)));
    return scope.Finish(size);
}

// Files of both families bear the same fourcc, and nothing but the length byte tells a counted
// name from a text. A longer counted name would need two length bytes; no file has one that fits,
// so from 256 bytes on the name is always a text.
MovAtom::Error HandlerReferenceAtom::ReadName(FileBuffer &buffer, uint64_t rest)
{
    const uint8_t *bytes = rest <= buffer.BytesLeft() ? buffer.ReadInPlace(rest) : nullptr;
    if (!bytes)
        return ERROR_ATOM_READ_FAILED;
    hasCountedName = rest > 0 && rest < 256 && bytes[0] == rest - 1;
    const uint64_t skipped = hasCountedName ? 1 : 0;
    return MakeRoom(buffer, rest, [&] {
        nameBytes.assign(reinterpret_cast<const char *>(bytes) + skipped, rest - skipped);
    });
}

MovAtom::Error HandlerReferenceAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer, Fields(*this)));
    if (hasCountedName)
        MOV_WRITE(WriteNumber(buffer, static_cast<uint8_t>(nameBytes.size())));
    return WriteBytes(buffer, nameBytes.data(), nameBytes.size());
}

void HandlerReferenceAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "HandlerReferenceAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintFourCC(out, block.Depth(), "ComponentType: ", componentType);
    // Spelled so in every dump there is; programs that compare dumps rely on it.
    PrintFourCC(out, block.Depth(), "ComponentSubype: ", componentSubtype);
    PrintFourCC(out, block.Depth(), "ComponentManufacturer: ", componentManufacturer);
    PrintLine(out, block.Depth(), "ComponentFlags: %d", componentFlags);
    PrintLine(out, block.Depth(), "ComponentFlagsMask: %d", componentFlagsMask);
    PrintLine(out, block.Depth(), "ComponentName: %s", nameBytes.c_str());
}

uint64_t HandlerReferenceAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this)) + (hasCountedName ? 1 : 0)
        + nameBytes.size();
}

std::string_view HandlerReferenceAtom::GetName() const
{
    return std::string_view(nameBytes).substr(0, nameBytes.find('\0'));
}

void HandlerReferenceAtom::SetName(const std::string &name_)
{
    nameBytes = name_;
    if (hasCountedName)
        nameBytes.resize(nameBytes.size() < 254 ? nameBytes.size() : 254);
    else
        nameBytes.push_back('\0');
}

} // namespace Tavro::MovParserLib
