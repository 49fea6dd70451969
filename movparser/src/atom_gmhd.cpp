// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_gmhd.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error BaseMediaInformationHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    const ChildRange children(scope, size);
    MOV_READ(scope, ReadOptionalChild(children, &mediaInfo));
    MOV_READ(scope, ReadOptionalChild(children, &timeCodeHandler));
    MOV_READ(scope, ReadOptionalChild(children, &telemetryHandler));
    return scope.Finish(size);
}

MovAtom::Error BaseMediaInformationHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteChild(buffer, mediaInfo));
    MOV_WRITE(WriteChild(buffer, timeCodeHandler));
    return WriteChild(buffer, telemetryHandler);
}

void BaseMediaInformationHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "BaseMediaInformationHeaderAtom");
    MovAtom::PrintToString(out, block.Depth());
    block.Child(mediaInfo);
    block.Child(timeCodeHandler);
    block.Child(telemetryHandler);
}

uint64_t BaseMediaInformationHeaderAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfChild(mediaInfo) + SizeOfChild(timeCodeHandler)
        + SizeOfChild(telemetryHandler);
}

} // namespace Tavro::MovParserLib
