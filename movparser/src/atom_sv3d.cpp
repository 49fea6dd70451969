// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_sv3d.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error sphericalVideoAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    header = sphericalVideoHeaderAtom();
    projection = sphericalProjectionAtom();
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 switch (child) {
                 case sphericalVideoHeaderAtom::kType:
                     return header.Read(buffer);
                 case sphericalProjectionAtom::kType:
                     return projection.Read(buffer);
                 default:
                     return SkipUnparsed(buffer);
                 }
             }));
    return scope.Finish(size);
}

MovAtom::Error sphericalVideoAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(header.Write(buffer));
    return projection.Write(buffer);
}

void sphericalVideoAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "sphericalVideoAtom");
    MovAtom::PrintToString(out, block.Depth());
    header.PrintToString(out, block.Depth());
    projection.PrintToString(out, block.Depth());
}

uint64_t sphericalVideoAtom::GetSize() const
{
    return MovAtom::GetSize() + header.GetSize() + projection.GetSize();
}

} // namespace Tavro::MovParserLib
