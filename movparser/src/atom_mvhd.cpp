// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_mvhd.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error MovieHeaderAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullDatedAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    return scope.Finish(size);
}

MovAtom::Error MovieHeaderAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullDatedAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void MovieHeaderAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "MovieHeaderAtom");
    MovFullDatedAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "TimeScale: %d", timeScale);
    PrintLine(out, block.Depth(), "Duration: %d", duration);
    PrintLine(out, block.Depth(), "PreferredRate: %f", preferredRate / 65536.0);
    PrintLine(out, block.Depth(), "PreferredVolume: %f", preferredVolume / 256.0);
    PrintLine(out, block.Depth(), "Reserved: %d %d %d %d %d %d %d %d %d %d", reserved[0],
              reserved[1], reserved[2], reserved[3], reserved[4], reserved[5], reserved[6],
              reserved[7], reserved[8], reserved[9]);
    PrintMatrix(out, block.Depth(), matrix);
    PrintLine(out, block.Depth(), "PreviewTime: %d", previewTime);
    PrintLine(out, block.Depth(), "PreviewDuration: %d", previewDuration);
    PrintLine(out, block.Depth(), "PosterTime: %d", posterTime);
    PrintLine(out, block.Depth(), "SelectionTime: %d", selectionTime);
    PrintLine(out, block.Depth(), "SelectionDuration: %d", selectionDuration);
    PrintLine(out, block.Depth(), "CurrentTime: %d", currentTime);
    PrintLine(out, block.Depth(), "NextTrackNumber: %d", nextTrackId);
}

uint64_t MovieHeaderAtom::GetSize() const
{
    return MovFullDatedAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
