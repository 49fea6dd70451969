// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A film of 8 GiB whose media are a hole: it takes the room of its tables only. The movie atom
// stands at the end, as cameras write it.

#include <cstdint>
#include <string>
#include <vector>

/// A table of numbers of one width, as it lies in the file.
struct EntryTable
{
    uint64_t position = 0; ///< Of the first number, from the movie atom's first byte.
    uint64_t count = 0; ///< Numbers, not entries.
    unsigned width = 4; ///< Bytes of a number.
};

/// A sparse film on the disk for as long as the object lives. Only the open file keeps it there: a
/// run that is killed leaves nothing behind.
class SparseMovie
{
public:
    /// Writes the film into a folder, with so many samples at 60 a second; each has a size, a
    /// composition offset and a chunk of its own. Throws std::runtime_error.
    SparseMovie(const std::string &folder, uint32_t samples);
    ~SparseMovie();
    SparseMovie(const SparseMovie &) = delete;
    SparseMovie &operator=(const SparseMovie &) = delete;

    /// A name by which this process and others open the film.
    const std::string &path() const { return m_path; }

    uint32_t samples() const { return m_samples; }

    uint64_t moviePosition() const { return m_moviePosition; }

    uint64_t movieSize() const { return m_movieSize; }

    /// Where the atoms of the top level begin.
    const std::vector<uint64_t> &topLevelPositions() const { return m_topLevelPositions; }

    /// Every table with more than a handful of entries.
    const std::vector<EntryTable> &tables() const { return m_tables; }

private:
    std::vector<uint8_t> makeMovie();

    std::string m_path;
    int m_file = -1;
    uint32_t m_samples;
    uint64_t m_moviePosition = 0;
    uint64_t m_movieSize = 0;
    std::vector<uint64_t> m_topLevelPositions;
    std::vector<EntryTable> m_tables;
};
