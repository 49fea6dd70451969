// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_tusi.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cinttypes>

namespace Tavro::MovParserLib {

MovAtom::Error TavroCameraTUSIAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    // A record of another size is of an unknown kind. The cursor stays behind the preamble.
    if (size != kTotalSize)
        return ERROR_MALFORMED_ATOM;
    record = {};
    MOV_READ(scope, ReadFields(buffer, TavroRigShot::Fields(record)));
    return scope.Finish(size);
}

MovAtom::Error TavroCameraTUSIAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer, TavroRigShot::Fields(record)));
    // Two bytes that nobody reads close the record.
    return WriteNumber(buffer, uint16_t{0});
}

void TavroCameraTUSIAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TUSIAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "orbis_shot_count: %u", record.orbis_shot_count);
    PrintLine(out, block.Depth(), "rig_primary_camera_esn: %" PRIu64,
              record.rig_primary_camera_esn);
    PrintLine(out, block.Depth(), "capture_start_timstamp: %u", record.capture_start_timstamp);
    PrintLine(out, block.Depth(), "chapter_number: %u", record.chapter_number);
}

uint64_t TavroCameraTUSIAtom::GetSize() const
{
    return kTotalSize;
}

} // namespace Tavro::MovParserLib
