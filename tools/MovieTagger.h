// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Tags the first video track of a film as a panorama, in a copy. The library's atom classes make
// the tags; they are spliced into the movie atom's bytes, in which everything else stays as it was,
// and whatever points behind the movie atom follows it.

#include "tools/DataOffsets.h"
#include "tools/VideoTrackTags.h"

#include <QString>

#include <vector>

class OutputFile;

/// One film: `read`, then `apply`, then `write`. Each returns false with `errorString` set, and
/// throws TooManyAtoms, or std::bad_alloc when memory ends.
class MovieTagger
{
public:
    /// Finds the atoms of the file behind the descriptor, which must stay open, and loads the
    /// movie.
    bool read(int file);
    bool apply(const MovieTags &tags);
    /// Where it is the output that failed, `errorString` stays empty.
    bool write(OutputFile *out);

    QString errorString() const { return m_error; }

    /// What of the film's own metadata `apply` could not keep.
    const QStringList &lost() const { return m_lost; }

private:
    struct TopLevelAtom
    {
        uint32_t type = 0; ///< 0 for bytes at the end that are no atom.
        uint64_t position = 0;
        uint64_t headerSize = 0;
        uint64_t size = 0; ///< As far as the file goes.
    };

    bool scan(uint64_t fileSize);
    bool load(const TopLevelAtom &atom, RawAtom *into);
    /// Writes an atom that may point at places in the file.
    bool writeMoved(const TopLevelAtom &atom, OutputFile *out);
    bool fail(const QString &why);

    int m_file = -1;
    std::vector<TopLevelAtom> m_atoms;
    TopLevelAtom m_oldMovie;
    RawAtom m_movie;
    OffsetShift m_shift;
    QString m_error;
    QStringList m_lost;
};
