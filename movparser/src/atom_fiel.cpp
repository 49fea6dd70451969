// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_fiel.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error FieldsAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    // The cursor stays behind the last field: trailing bytes are the parent's next child.
    return ERROR_OKAY;
}

MovAtom::Error FieldsAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteFields(buffer, Fields(*this));
}

void FieldsAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "FieldsAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Fields: %d", fields);
    PrintLine(out, block.Depth(), "Detail: %d", detail);
}

uint64_t FieldsAtom::GetSize() const
{
    return MovAtom::GetSize() + SizeOfFields(Fields(*this));
}

} // namespace Tavro::MovParserLib
