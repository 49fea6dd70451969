// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_uuid.h"

#include "movparser/src/atom_io.h"

namespace Tavro::MovParserLib {

MovAtom::Error sphericalVideoLegacyAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    return scope.Finish(size);
}

} // namespace Tavro::MovParserLib
