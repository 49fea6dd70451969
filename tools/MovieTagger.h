// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Tags the first video track of a film as a panorama, in a copy. The library's atom classes make
// the tags; they are spliced into the movie atom's bytes, in which everything else stays as it was,
// and whatever points at places that move follows them.

#include "tools/FilmFile.h"
#include "tools/PlaceMap.h"
#include "tools/TrackMedia.h"
#include "tools/VideoTrackTags.h"

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

    /// Whether the film refers to media in other files.
    bool hasMediaElsewhere() const { return m_hasMediaElsewhere; }

private:
    /// Writes an atom that may point at places in the file.
    bool writeMoved(const FilmFile::TopLevelAtom &atom, OutputFile *out);
    bool fail(const QString &why);

    FilmFile m_film;
    RawAtom m_movie;
    PlaceMap m_places;
    std::map<uint32_t, TrackMedia> m_tracks;
    bool m_hasMediaElsewhere = false;
    QString m_error;
    QStringList m_lost;
};
