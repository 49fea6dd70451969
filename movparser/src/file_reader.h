// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The library's view of a file to read: whole blocks at a position, into a buffer.

#include "movparser/src/file_buffer.h"

#include <cstdint>

class QString;

namespace Tavro::MovParserLib {

class FileReader
{
public:
    enum Error : uint32_t {
        ERROR_OKAY,
        ERROR_FILE_PATH,
        ERROR_FILE_OPEN,
        ERROR_FILE_READ,
        ERROR_FILE_POSITION,
        ERROR_READ_FAILED,
        ERROR_READ_IN_PROGRESS,
        ERROR_BUFFER_ALLOC,
        ERROR_GENERAL_ALLOC,
        ERROR_WAITING_ON_NONREQUEST,
        ERROR_MULTIPLE_CONCURRENT_READ_ON_FILE_BUFFER,
        ERROR_ATTEMPT_TO_READ_PAST_EOF,
        ERROR_BAD_MESSAGE
    };

    virtual ~FileReader() = default;

    /// `path` is UTF-8. Closes an earlier file first.
    [[nodiscard]] virtual Error Open(const char *path) = 0;
    [[nodiscard]] virtual Error Open(const QString &path) = 0;

    /// Fills `buffer` with `length` bytes of the file from `position` on.
    [[nodiscard]] virtual Error Read(FileBuffer &buffer, int64_t position, int64_t length) = 0;

    virtual Error Close() = 0;
};

} // namespace Tavro::MovParserLib
