// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Reads files through QFile in whole blocks and without a second buffer in between.

#include "movparser/src/file_reader.h"

#include <QtCore/QFile>

namespace Tavro::MovParserLib {

class SyncFileReaderQt : public FileReader
{
public:
    ~SyncFileReaderQt() override;

    [[nodiscard]] Error Open(const char *path) override;
    [[nodiscard]] Error Open(const QString &path) override;

    /// Near the end of a file up to 511 logical bytes may lie behind the file's end although the
    /// read succeeds: the bytes that came are counted from the block's start. Those bytes are 0.
    [[nodiscard]] Error Read(FileBuffer &buffer, int64_t position, int64_t length) override;

    Error Close() override;

private:
    QFile m_file;
    bool m_isOpen = false;
};

} // namespace Tavro::MovParserLib
