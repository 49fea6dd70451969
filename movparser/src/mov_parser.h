// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The root of the classes that work on whole files; it gives their error codes a name.

#include <cstdint>

namespace Tavro::MovParserLib {

class MovParser
{
public:
    enum Error : uint32_t {
        ERROR_OKAY,
        ERROR_PARSER,
        ERROR_MISSING_MOVIE_HEADER,
        ERROR_FILE_NOT_COMPATIBLE,
        ERROR_INVALID_OP,
        ERROR_INVALID_ARG,
        ERROR_MEM_ALLOC,
        ERROR_OP_FAILED
    };
};

} // namespace Tavro::MovParserLib
