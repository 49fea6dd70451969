// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/report_error.h"

#include <cstdio>

namespace Tavro::MovParserLib {

namespace {

// Each list stands in the order of its class's `Error`.
constexpr const char *kParserErrors[] = {"ERROR_OKAY",
                                         "ERROR_PARSER",
                                         "ERROR_MISSING_MOVIE_HEADER",
                                         "ERROR_FILE_NOT_COMPATIBLE",
                                         "ERROR_INVALID_OP",
                                         "ERROR_INVALID_ARG",
                                         "ERROR_MEM_ALLOC",
                                         "ERROR_OP_FAILED"};
constexpr const char *kFileReaderErrors[] = {"ERROR_OKAY",
                                             "ERROR_FILE_PATH",
                                             "ERROR_FILE_OPEN",
                                             "ERROR_FILE_READ",
                                             "ERROR_FILE_POSITION",
                                             "ERROR_READ_FAILED",
                                             "ERROR_READ_IN_PROGRESS",
                                             "ERROR_BUFFER_ALLOC",
                                             "ERROR_GENERAL_ALLOC",
                                             "ERROR_WAITING_ON_NONREQUEST",
                                             "ERROR_MULTIPLE_CONCURRENT_READ_ON_FILE_BUFFER",
                                             "ERROR_ATTEMPT_TO_READ_PAST_EOF",
                                             "ERROR_BAD_MESSAGE"};
constexpr const char *kFileWriterErrors[] = {"ERROR_OKAY",
                                             "ERROR_FILE_PATH",
                                             "ERROR_FILE_OPEN",
                                             "ERROR_FILE_WRITE",
                                             "ERROR_FILE_POSITION",
                                             "ERROR_WRITE_FAILED",
                                             "ERROR_WRITE_IN_PROGRESS",
                                             "ERROR_BUFFER_ALLOC",
                                             "ERROR_GENERAL_ALLOC",
                                             "ERROR_WAITING_ON_NONREQUEST",
                                             "ERROR_MULTIPLE_CONCURRENT_WRITE_ON_FILE_BUFFER",
                                             "ERROR_BAD_MESSAGE"};
constexpr const char *kBufferErrors[] = {"ERROR_OKAY",
                                         "ERROR_MEM_ALLOC",
                                         "ERROR_ALLOCATOR_EXISTS",
                                         "ERROR_BUFFER_EMPTY",
                                         "ERROR_BUFFER_FULL",
                                         "ERROR_BUFFER_OVER_FLOW",
                                         "ERROR_BUFFER_UNDER_FLOW",
                                         "ERROR_INVALID_ARG",
                                         "ERROR_MALFORMED_OBJECT"};
constexpr const char *kAtomErrors[] = {"ERROR_OKAY",
                                       "ERROR_INVALID_ARG",
                                       "ERROR_INVALID_RET_VAL",
                                       "ERROR_ATOM_NOT_FOUND",
                                       "ERROR_ATOM_READ_FAILED",
                                       "ERROR_ATOM_WRITE_FAILED",
                                       "ERROR_WRONG_ATOM_TYPE",
                                       "ERROR_MEM_ALLOC",
                                       "ERROR_INVALID_OP",
                                       "ERROR_UNIMPLEMENTED_FUNCTION",
                                       "ERROR_MALFORMED_ATOM",
                                       "ERROR_ZERO_SIZE_ATOM"};

struct Line
{
    const char *prefix;
    const char *name;
};

template <uint32_t N>
Line Join(const char *prefix, const char *const (&names)[N], uint32_t code,
          const char *unknown = "Unknown error code")
{
    return {prefix, code < N ? names[code] : unknown};
}

Line LineOf(uint32_t domain, uint32_t code)
{
    switch (domain) {
    case kFileReaderDomain:
        return Join("FileReader::Error  >>  ", kFileReaderErrors, code);
    case kFileWriterDomain:
        return Join("FileWriter::Error  >>  ", kFileWriterErrors, code);
    case kBufferDomain:
        return Join("GenericBuffer::Error  >>  ", kBufferErrors, code);
    case kAtomDomain:
        return Join("MovAtom::Error  >>  ", kAtomErrors, code);
    default:
        // The codes of a failed read arrive here under the parser's name too, when a file ends
        // before its `moov`: the ones that the parser has no name for leave the prefix alone.
        return domain < kFileReaderDomain ? Join("MovParser::Error  >>  ", kParserErrors, code, "")
                                          : Line{"", "Unknown error code"};
    }
}

} // namespace

std::string ErrorText(uint32_t domain, uint32_t code)
{
    const Line line = LineOf(domain, code);
    return std::string(line.prefix) + line.name;
}

uint32_t ReportError(uint32_t domain, uint32_t code)
{
    // Printed in parts: a failure for want of memory is reported too.
    const Line line = LineOf(domain, code);
    if (domain != 0 || code != 0)
        std::fprintf(stderr, "%s%s\n", line.prefix, line.name);
    return domain | code;
}

} // namespace Tavro::MovParserLib
