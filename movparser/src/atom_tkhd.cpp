// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_tkhd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cinttypes>

namespace Tavro::MovParserLib {

MovAtom::Error TrackHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    const uint64_t position = buffer.Tell();
    MOV_READ(scope, MovFullDatedAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    bufferPosition = static_cast<uint32_t>(position);
    return scope.Finish(size);
}

MovAtom::Error TrackHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullDatedAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void TrackHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TrackHeaderAtom");
    MovFullDatedAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "TrackID: %d", trackId);
    PrintLine(out, block.Depth(), "Reserved1: %d", reserved1);
    PrintLine(out, block.Depth(), "Duration: %d", duration);
    PrintLine(out, block.Depth(), "Reserved2: %" PRIu64, reserved2);
    PrintLine(out, block.Depth(), "Layer: %d", layer);
    PrintLine(out, block.Depth(), "AlternateGroup: %d", alternateGroup);
    PrintLine(out, block.Depth(), "Volume: %d", volume);
    PrintLine(out, block.Depth(), "Reserved3: %d", reserved3);
    PrintMatrix(out, block.Depth(), matrix);
    PrintLine(out, block.Depth(), "Width: %f", width / 65536.0);
    PrintLine(out, block.Depth(), "Height: %f", height / 65536.0);
}

uint64_t TrackHeaderAtom::GetSize() const
{
    return MovFullDatedAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
