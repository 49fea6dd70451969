// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_mdia.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error MediaAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    const ChildRange children(scope, size);
    if (!children.Find(MediaHeaderAtom::kType))
        return scope.Fail();
    MOV_READ(scope, header.Read(buffer));
    MOV_READ(scope, ReadOptionalChild(children, &handler));
    MOV_READ(scope, MakeRoom(buffer, sizeof(VideoMediaInformationAtom), [this] {
                 information = MakeMediaInformation(handler ? handler->componentSubtype : 0);
             }));
    if (information) {
        if (!children.Find(MediaInformationAtom::kType))
            information.reset();
        else
            MOV_READ(scope, information->Read(buffer, MediaInformationAtom::kType));
    }
    return scope.Finish(size);
}

MovAtom::Error MediaAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(header.Write(buffer));
    MOV_WRITE(WriteChild(buffer, handler));
    return WriteChild(buffer, information);
}

void MediaAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "MediaAtom");
    MovAtom::PrintToString(out, block.Depth());
    header.PrintToString(out, block.Depth());
    block.Child(handler);
    block.Child(information);
}

uint64_t MediaAtom::GetSize() const
{
    return MovAtom::GetSize() + header.GetSize() + SizeOfChild(handler) + SizeOfChild(information);
}

MovAtom::Error MediaAtom::GetHandlerType(uint32_t *handlerType) const
{
    if (!handlerType)
        return ERROR_INVALID_ARG;
    *handlerType = handler ? handler->componentSubtype : 0;
    return handler ? ERROR_OKAY : ERROR_MALFORMED_ATOM;
}

MovAtom::Error MediaAtom::GetName(char *buffer) const
{
    if (!buffer)
        return ERROR_INVALID_ARG;
    if (!handler)
        return ERROR_MALFORMED_ATOM;
    const std::string_view name = handler->GetName();
    buffer[name.copy(buffer, 254)] = '\0';
    return ERROR_OKAY;
}

const MediaInformationAtom &MediaAtom::Information() const
{
    static const MediaInformationAtom kNone;
    return information ? *information : kNone;
}

} // namespace Tavro::MovParserLib
