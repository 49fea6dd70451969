// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The library's view of a file to write: bytes from a buffer, one after the other or at a position.

#include "movparser/src/file_buffer.h"

#include <cstdint>

class QString;

namespace Tavro::MovParserLib {

class FileWriter
{
public:
    enum Error : uint32_t {
        ERROR_OKAY,
        ERROR_FILE_PATH,
        ERROR_FILE_OPEN,
        ERROR_FILE_WRITE,
        ERROR_FILE_POSITION,
        ERROR_WRITE_FAILED,
        ERROR_WRITE_IN_PROGRESS,
        ERROR_BUFFER_ALLOC,
        ERROR_GENERAL_ALLOC,
        ERROR_WAITING_ON_NONREQUEST,
        ERROR_MULTIPLE_CONCURRENT_WRITE_ON_FILE_BUFFER,
        ERROR_BAD_MESSAGE
    };

    virtual ~FileWriter() = default;

    /// `path` is UTF-8. Closes an earlier file first; an existing file is emptied.
    [[nodiscard]] virtual Error Open(const char *path) = 0;
    [[nodiscard]] virtual Error Open(const QString &path) = 0;

    /// Writes the first `length` logical bytes of `buffer` where the last write ended.
    [[nodiscard]] virtual Error Write(FileBuffer &buffer, int64_t length) = 0;

    /// The same at a position of the file.
    [[nodiscard]] virtual Error Write(FileBuffer &buffer, int64_t length, int64_t position) = 0;

    virtual Error Close() = 0;

    /// The file's position, or -1 when closed.
    virtual int64_t Tell() = 0;
};

} // namespace Tavro::MovParserLib
