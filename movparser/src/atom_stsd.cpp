// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stsd.h"

#include "movparser/src/atom_io.h"

namespace Tavro::MovParserLib {

MovAtom::Error SampleDescriptionAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    return scope.Finish(size);
}

MovAtom::Error SampleDescriptionAtom::GetFrameSize(uint32_t *, uint32_t *) const
{
    return ERROR_INVALID_RET_VAL;
}

MovAtom::Error SampleDescriptionAtom::AddVideoDescription(uint32_t, uint16_t, uint16_t)
{
    return ERROR_INVALID_OP;
}

MovAtom::Error SampleDescriptionAtom::AddSoundDescription(uint32_t, uint32_t, double)
{
    return ERROR_INVALID_OP;
}

} // namespace Tavro::MovParserLib
