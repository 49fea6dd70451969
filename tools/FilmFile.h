// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A film behind a file descriptor: its top-level atoms, and the bytes of those that are asked for.

#include "tools/RawAtom.h"

#include <QString>

/// Reads with errors in `errorString`; may throw TooManyAtoms, or std::bad_alloc when memory ends.
class FilmFile
{
public:
    struct TopLevelAtom
    {
        uint32_t type = 0; ///< 0 for bytes at the end that are no atom.
        uint64_t position = 0;
        uint64_t headerSize = 0;
        uint64_t size = 0; ///< As far as the file goes.
        bool isCut = false; ///< The file ends within it.

        uint64_t end() const { return position + size; }
    };

    /// Finds the atoms of the file behind the descriptor, which must stay open.
    bool open(int file);

    int file() const { return m_file; }

    const std::vector<TopLevelAtom> &atoms() const { return m_atoms; }

    /// The first movie atom; a film that could be opened has one.
    const TopLevelAtom &movie() const { return m_atoms[m_movie]; }

    bool load(const TopLevelAtom &atom, RawAtom *into);

    /// Up to `length` bytes from `position` on: what the file has of them.
    std::vector<uint8_t> bytes(uint64_t position, size_t length) const;

    QString errorString() const { return m_error; }

private:
    bool fail(const char *why);

    int m_file = -1;
    std::vector<TopLevelAtom> m_atoms;
    size_t m_movie = 0;
    QString m_error;
};
