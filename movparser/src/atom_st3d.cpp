// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_st3d.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error stereoVideoAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    stereo_mode = 0; // what a failure leaves behind
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error stereoVideoAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void stereoVideoAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "spatialStereoVideoAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    // The number itself as a character, so mostly one that does not show.
    PrintLine(out, block.Depth(), "stereo mode: %c", stereo_mode);
}

uint64_t stereoVideoAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this));
}

uint32_t stereoVideoAtom::GetStereoMode() const
{
    switch (stereo_mode) {
    case 1:
        return 2;
    case 2:
        return 1;
    default:
        return 0;
    }
}

void stereoVideoAtom::SetStereoMode(uint32_t mode)
{
    stereo_mode = mode == 1 ? 2 : mode == 2 ? 1 : 0;
}

} // namespace Tavro::MovParserLib
