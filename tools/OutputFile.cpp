// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/OutputFile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {
// Small enough that an interruption is noticed at once, large enough to cost nothing.
constexpr uint64_t kBlockSize = 8U << 20;
} // namespace

OutputFile::OutputFile(const QString &path, const std::atomic<bool> &interrupted)
    : m_file(path)
    , m_interrupted(interrupted)
{ }

bool OutputFile::open()
{
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return true;
    m_error = m_file.errorString();
    return false;
}

bool OutputFile::append(const std::vector<uint8_t> &bytes)
{
    size_t done = 0;
    while (done < bytes.size()) {
        if (failIfInterrupted())
            return false;
        const ssize_t written = pwrite(m_file.handle(), bytes.data() + done, bytes.size() - done,
                                       static_cast<off_t>(m_position));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return failWithErrno("cannot write");
        done += static_cast<size_t>(written);
        m_position += static_cast<uint64_t>(written);
    }
    return true;
}

bool OutputFile::appendFrom(int source, uint64_t position, uint64_t length)
{
    const uint64_t end = position + length;
    while (position < end) {
        const off_t data = lseek(source, static_cast<off_t>(position), SEEK_DATA);
        if (data < 0 && errno == ENXIO) { // a hole up to the end of the file
            m_position += end - position;
            return true;
        }
        uint64_t dataEnd = end;
        if (data >= 0) { // a file system without holes answers an error: all of it is data then
            const uint64_t begin = std::min(end, static_cast<uint64_t>(data));
            m_position += begin - position;
            position = begin;
            const off_t hole = lseek(source, data, SEEK_HOLE);
            if (hole >= 0)
                dataEnd = std::min(end, static_cast<uint64_t>(hole));
        }
        if (position < dataEnd && !copyData(source, position, dataEnd - position))
            return false;
        position = std::max(position, dataEnd);
    }
    return true;
}

bool OutputFile::copyData(int source, uint64_t position, uint64_t length)
{
    std::vector<uint8_t> block;
    while (length > 0) {
        if (failIfInterrupted())
            return false;
        const size_t wanted = static_cast<size_t>(std::min(length, kBlockSize));
        ssize_t copied = -1;
        if (m_canCopyInKernel) {
            auto from = static_cast<off64_t>(position);
            auto to = static_cast<off64_t>(m_position);
            copied = copy_file_range(source, &from, m_file.handle(), &to, wanted, 0);
            // Not between these two file systems, or not by this kernel: by hand from here on. A
            // real error of the disk shows itself again there.
            m_canCopyInKernel = copied >= 0 || errno == EINTR;
            if (copied > 0)
                m_position += static_cast<uint64_t>(copied);
        } else {
            block.resize(wanted);
            copied = pread(source, block.data(), wanted, static_cast<off_t>(position));
            if (copied < 0 && errno != EINTR) {
                m_hasSourceFailed = true;
                return failWithErrno("cannot read");
            }
            if (copied > 0) {
                block.resize(static_cast<size_t>(copied));
                if (!append(block))
                    return false;
            }
        }
        if (copied == 0) {
            m_hasSourceFailed = true;
            m_error = QStringLiteral("the file became shorter while it was copied");
            return false;
        }
        if (copied > 0) {
            position += static_cast<uint64_t>(copied);
            length -= static_cast<uint64_t>(copied);
        }
    }
    return true;
}

bool OutputFile::finish()
{
    if (failIfInterrupted())
        return false;
    // A hole at the end has moved the position but not the file's size.
    if (ftruncate(m_file.handle(), static_cast<off_t>(m_position)) != 0)
        return failWithErrno("cannot set the size");
    // Some file systems cannot, which is no reason to fail.
    if (fsync(m_file.handle()) != 0 && errno != EINVAL && errno != ENOTSUP)
        return failWithErrno("cannot write");
    return true;
}

bool OutputFile::commit()
{
    if (failIfInterrupted())
        return false;
    if (m_file.commit())
        return true;
    m_error = m_file.errorString();
    return false;
}

bool OutputFile::failWithErrno(const char *what)
{
    m_error = QString::fromLatin1(what) + QStringLiteral(": ")
        + QString::fromLocal8Bit(std::strerror(errno));
    return false;
}

bool OutputFile::failIfInterrupted()
{
    if (m_interrupted)
        m_error = QStringLiteral("interrupted");
    return m_interrupted;
}
