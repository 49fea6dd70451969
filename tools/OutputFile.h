// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The copy that grows under a name of its own and takes its final name in one step, so that nobody
// ever sees half of it: a failure, an interruption or a crash leaves what stood there before.

#include <QSaveFile>

#include <atomic>
#include <cstdint>
#include <vector>

/// A file that appears under its name when `commit` succeeds, or not at all.
class OutputFile
{
public:
    /// `interrupted` is asked between two blocks; once true, every operation fails. It must outlive
    /// this object.
    OutputFile(const QString &path, const std::atomic<bool> &interrupted);

    bool open();

    /// Appends bytes.
    bool append(const std::vector<uint8_t> &bytes);

    /// Appends `length` bytes of the file descriptor `source` from `position` on. Holes stay holes.
    bool appendFrom(int source, uint64_t position, uint64_t length);

    /// Brings what was appended to the disk, which may turn out to be full only now. To be called
    /// before `handle` is read or `commit` called.
    bool finish();

    /// Gives the file its name.
    bool commit();

    /// The file under its temporary name, for reading too.
    int handle() const { return m_file.handle(); }

    /// Why the last operation failed.
    QString errorString() const { return m_error; }

    /// Whether it was the reading of what was to be appended that failed.
    bool hasSourceFailed() const { return m_hasSourceFailed; }

private:
    bool copyData(int source, uint64_t position, uint64_t length);
    bool failWithErrno(const char *what);
    bool failIfInterrupted();

    QSaveFile m_file;
    const std::atomic<bool> &m_interrupted;
    uint64_t m_position = 0;
    bool m_canCopyInKernel = true;
    bool m_hasSourceFailed = false;
    QString m_error;
};
