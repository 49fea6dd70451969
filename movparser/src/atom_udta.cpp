// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_udta.h"

#include "movparser/src/atom_io.h"

namespace Tavro::MovParserLib {

MovAtom::Error UserDataAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    return scope.Finish(size);
}

MovAtom::Error UserDataAtom::GetFirmware(const char **text) const
{
    *text = nullptr;
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
