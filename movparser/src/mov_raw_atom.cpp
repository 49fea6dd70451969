// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/mov_raw_atom.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error MovRawAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    data.clear();
    MOV_READ(scope, MovAtom::Read(buffer, m_ownType));
    if (size > GetHeaderSize())
        MOV_READ(scope, ReadBytes(buffer, size - GetHeaderSize(), &data));
    return scope.Finish(size);
}

MovAtom::Error MovRawAtom::Write(FileBuffer &buffer)
{
    if (data.empty() && m_emptyForm == EmptyForm::kRefused)
        return ERROR_ATOM_WRITE_FAILED;
    MOV_WRITE(MovAtom::Write(buffer));
    if (data.empty() && m_emptyForm == EmptyForm::kZeroByte)
        return WriteNumber(buffer, uint8_t{0});
    return WriteBytes(buffer, data.data(), data.size());
}

uint64_t MovRawAtom::GetSize() const
{
    // The 0 byte counts: a size that left it out would make it the first byte of the next atom.
    const bool zeroByte = data.empty() && m_emptyForm == EmptyForm::kZeroByte;
    return MovAtom::GetSize() + (zeroByte ? 1 : data.size());
}

void MovRawAtom::PrintBytes(std::string *out, uint32_t depth, const char *label) const
{
    PrintTable(out, depth, label, data, [out](uint8_t byte) { PrintText(out, "%02x ", byte); });
}

} // namespace Tavro::MovParserLib
