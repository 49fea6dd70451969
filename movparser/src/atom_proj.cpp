// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_proj.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error sphericalProjectionAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    header = sphericalProjectionHeaderAtom();
    equi.reset();
    cube.reset();
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 switch (child) {
                 case sphericalProjectionHeaderAtom::kType:
                     return header.Read(buffer);
                 case sphericalEquiAtom::kType:
                     return ReadChild(buffer, &equi);
                 case sphericalCubeAtom::kType:
                     return ReadChild(buffer, &cube);
                 default:
                     return SkipUnparsed(buffer);
                 }
             }));
    return scope.Finish(size);
}

MovAtom::Error sphericalProjectionAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(header.Write(buffer));
    MOV_WRITE(WriteChild(buffer, equi));
    return WriteChild(buffer, cube);
}

void sphericalProjectionAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "sphericalProjectionAtom");
    MovAtom::PrintToString(out, block.Depth());
    header.PrintToString(out, block.Depth());
    block.Child(equi);
    block.Child(cube);
}

uint64_t sphericalProjectionAtom::GetSize() const
{
    return MovAtom::GetSize() + header.GetSize() + SizeOfChild(equi) + SizeOfChild(cube);
}

uint32_t sphericalProjectionAtom::GetProjection() const
{
    return equi ? kProjectionEquirectangular : cube ? kProjectionCubemap : kProjectionUnknown;
}

void sphericalProjectionAtom::SetCube(uint32_t layout, uint32_t padding)
{
    cube.Ensure().layout = layout;
    cube->padding = padding;
    equi.reset();
}

void sphericalProjectionAtom::SetEqui(uint32_t top, uint32_t bottom, uint32_t left, uint32_t right)
{
    sphericalEquiAtom &bounds = equi.Ensure();
    bounds.projection_bounds_top = top;
    bounds.projection_bounds_bottom = bottom;
    bounds.projection_bounds_left = left;
    bounds.projection_bounds_right = right;
    cube.reset();
}

} // namespace Tavro::MovParserLib
