// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/sync_file_writer_qt.h"

#include <QtCore/QString>

namespace Tavro::MovParserLib {

SyncFileWriterQt::~SyncFileWriterQt()
{
    Close();
}

FileWriter::Error SyncFileWriterQt::Open(const char *path)
{
    return Open(QString::fromUtf8(path));
}

FileWriter::Error SyncFileWriterQt::Open(const QString &path)
{
    if (path.isEmpty())
        return ERROR_FILE_PATH;
    Close();
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return ERROR_FILE_OPEN;
    m_isOpen = true;
    return ERROR_OKAY;
}

FileWriter::Error SyncFileWriterQt::Write(FileBuffer &buffer, int64_t length)
{
    if (!m_isOpen)
        return ERROR_FILE_OPEN;
    uint64_t available = 0;
    buffer.GetLogicalSize(&available);
    if (static_cast<uint64_t>(length) > available)
        return ERROR_WRITE_FAILED;
    const char *bytes = reinterpret_cast<const char *>(buffer.GetData());
    return m_file.write(bytes, length) == length ? ERROR_OKAY : ERROR_WRITE_FAILED;
}

FileWriter::Error SyncFileWriterQt::Write(FileBuffer &buffer, int64_t length, int64_t position)
{
    if (!m_isOpen)
        return ERROR_FILE_OPEN;
    if (position < 0 || !m_file.seek(position))
        return ERROR_FILE_POSITION;
    return Write(buffer, length);
}

FileWriter::Error SyncFileWriterQt::Close()
{
    if (m_isOpen)
        m_file.close();
    m_isOpen = false;
    return ERROR_OKAY;
}

int64_t SyncFileWriterQt::Tell()
{
    return m_isOpen ? m_file.pos() : -1;
}

} // namespace Tavro::MovParserLib
