// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/sync_file_reader_qt.h"

#include <QtCore/QFileInfo>
#include <QtCore/QString>

namespace Tavro::MovParserLib {

SyncFileReaderQt::~SyncFileReaderQt()
{
    Close();
}

FileReader::Error SyncFileReaderQt::Open(const char *path)
{
    return Open(QString::fromUtf8(path));
}

FileReader::Error SyncFileReaderQt::Open(const QString &path)
{
    if (path.isEmpty())
        return ERROR_FILE_PATH;
    Close();
    // Opening a pipe would wait for its other end.
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        return ERROR_FILE_OPEN;
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return ERROR_FILE_OPEN;
    m_isOpen = true;
    return ERROR_OKAY;
}

FileReader::Error SyncFileReaderQt::Read(FileBuffer &buffer, int64_t position, int64_t length)
{
    if (!m_isOpen)
        return ERROR_FILE_OPEN;
    if (position < 0)
        return ERROR_FILE_POSITION;
    if (length < 0)
        return ERROR_READ_FAILED;
    // A length that a hostile header claims is not worth its memory when the file is shorter.
    const int64_t head = position % static_cast<int64_t>(FileBuffer::kBlockSize);
    if (!m_file.isSequential() && m_file.size() - (position - head) < length)
        return ERROR_ATTEMPT_TO_READ_PAST_EOF;
    if (length == 0 && head == 0)
        return ERROR_READ_FAILED; // no block at all, which a buffer in use must not be asked for
    if (buffer.Alloc(static_cast<unsigned long>(length), position, FileBuffer::kBlockSize)
        != GenericBuffer::ERROR_OKAY)
        return ERROR_BUFFER_ALLOC;
    if (!m_file.seek(position - head))
        return ERROR_FILE_POSITION;
    uint64_t blocks = 0;
    buffer.GetFullBufferSize(&blocks);
    if (static_cast<int64_t>(blocks) <= 0)
        return ERROR_READ_FAILED;
    const int64_t got =
        m_file.read(reinterpret_cast<char *>(buffer.GetBytes()), static_cast<int64_t>(blocks));
    // The part of `head` is not counted in, so success does not mean that the last bytes came;
    // what did not come is cleared so that nobody reads what lay in memory before.
    if (got >= 0 && got < static_cast<int64_t>(blocks))
        std::memset(buffer.GetBytes() + got, 0, blocks - static_cast<uint64_t>(got));
    if (got >= length) {
        buffer.SetPosition(0);
        buffer.SetBytesLeft(static_cast<uint64_t>(length));
        buffer.SetLogicalSize(static_cast<uint64_t>(length));
        return ERROR_OKAY;
    }
    return m_file.atEnd() ? ERROR_ATTEMPT_TO_READ_PAST_EOF : ERROR_READ_FAILED;
}

FileReader::Error SyncFileReaderQt::Close()
{
    if (m_isOpen)
        m_file.close();
    m_isOpen = false;
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
