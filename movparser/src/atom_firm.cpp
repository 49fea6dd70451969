// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_firm.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cstring>

namespace Tavro::MovParserLib {

MovAtom::Error TavroCameraFirmwareAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    m_version.clear();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    if (size > GetHeaderSize()) {
        MOV_READ(scope, ReadTable(buffer, size - GetHeaderSize(), &m_version));
        MOV_READ(scope, MakeRoom(buffer, m_version.size(), [this] { m_version.push_back(0); }));
    }
    return scope.Finish(size);
}

MovAtom::Error TavroCameraFirmwareAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return m_version.empty() ? WriteNumber(buffer, uint8_t{0})
                             : WriteBytes(buffer, GetVersion(), std::strlen(GetVersion()));
}

void TavroCameraFirmwareAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "FIRMAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "FirmwareVersion: %s", m_version.empty() ? "" : GetVersion());
}

uint64_t TavroCameraFirmwareAtom::GetSize() const
{
    // Without a payload a single 0 byte is written, and counts.
    return MovAtom::GetSize() + (m_version.empty() ? 1 : std::strlen(GetVersion()));
}

void TavroCameraFirmwareAtom::SetVersion(const std::string &text)
{
    m_version.assign(text.begin(), text.end());
    if (!m_version.empty())
        m_version.push_back(0);
}

} // namespace Tavro::MovParserLib
