// SPDX-License-Identifier: GPL-3.0-or-later
// What a track says about a panorama.
#include "movparser/src/atom_trak.h"

namespace Tavro::MovParserLib {

MovAtom::Error TrackAtom::GetStereoMode(uint32_t *) const
{
    return ERROR_INVALID_RET_VAL;
}

MovAtom::Error TrackAtom::GetProjection(uint32_t *) const
{
    return ERROR_INVALID_RET_VAL;
}

MovAtom::Error TrackAtom::GetInitialPose(float *, float *, float *) const
{
    return ERROR_INVALID_RET_VAL;
}

MovAtom::Error TrackAtom::GetWritingTool(std::string *, uint32_t *) const
{
    return ERROR_INVALID_RET_VAL;
}

} // namespace Tavro::MovParserLib
