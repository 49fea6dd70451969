// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Writes files through QFile.

#include "movparser/src/file_writer.h"

#include <QtCore/QFile>

namespace Tavro::MovParserLib {

class SyncFileWriterQt : public FileWriter
{
public:
    ~SyncFileWriterQt() override;

    [[nodiscard]] Error Open(const char *path) override;
    [[nodiscard]] Error Open(const QString &path) override;
    [[nodiscard]] Error Write(FileBuffer &buffer, int64_t length) override;
    [[nodiscard]] Error Write(FileBuffer &buffer, int64_t length, int64_t position) override;
    Error Close() override;
    int64_t Tell() override;

private:
    QFile m_file;
    bool m_isOpen = false;
};

} // namespace Tavro::MovParserLib
