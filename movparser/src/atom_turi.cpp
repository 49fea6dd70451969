// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_turi.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cinttypes>

namespace Tavro::MovParserLib {

MovAtom::Error TavroCameraTURIAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    // A record of another size is of an unknown kind. The cursor stays behind the preamble.
    if (size != kTotalSize)
        return ERROR_MALFORMED_ATOM;
    record = {};
    MOV_READ(scope, ReadFields(buffer, TavroRigIdentity::Fields(record)));
    return scope.Finish(size);
}

MovAtom::Error TavroCameraTURIAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteFields(buffer, TavroRigIdentity::Fields(record));
}

void TavroCameraTURIAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TURIAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "rig_primary_node_esn: %" PRIu64, record.rig_primary_node_esn);
    PrintLine(out, block.Depth(), "rig_type: %u", record.rig_type);
    PrintLine(out, block.Depth(), "rig_fw: %u %u %u", record.rig_fw[0], record.rig_fw[1],
              record.rig_fw[2]);
    PrintLine(out, block.Depth(), "rig_size: %u", record.rig_size);
    PrintLine(out, block.Depth(), "node_id: %u", record.node_id);
}

uint64_t TavroCameraTURIAtom::GetSize() const
{
    return kTotalSize;
}

} // namespace Tavro::MovParserLib
