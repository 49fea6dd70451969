// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/MovieTagger.h"

#include "movparser/src/mov_atom.h"
#include "tools/DataOffsets.h"
#include "tools/Fragment.h"
#include "tools/OutputFile.h"

#include <algorithm>

using Tavro::MovParserLib::FourCC;

namespace {
constexpr char kMovedItems[] = "has items whose places in the file cannot be moved";

/// Whether a top-level atom beside the movie may say where in the file something lies. A fragment
/// or an index that the file ends in leads nowhere: what it speaks of would stand behind it.
bool pointsAtPlaces(const FilmFile::TopLevelAtom &atom)
{
    switch (atom.type) {
    case FourCC("meta"):
        return true;
    case FourCC("mfra"):
    case FourCC("moof"):
    case FourCC("sidx"):
        return !atom.isCut;
    default:
        return false;
    }
}
} // namespace

bool MovieTagger::read(int file)
{
    return (m_film.open(file) && m_film.load(m_film.movie(), &m_movie))
        || fail(m_film.errorString());
}

bool MovieTagger::apply(const MovieTags &tags)
{
    QString why;
    if (!tagFirstVideoTrack(&m_movie, tags, &why, &m_lost))
        return fail(why);
    if (!relocateTables(&m_movie, m_film.movie().position, m_film.movie().end(), &m_places))
        return fail(QStringLiteral("has samples within its metadata that cannot be moved"));
    if (!m_places.isIdentity() && hasMovedItems(m_movie, m_places))
        return fail(QString::fromLatin1(kMovedItems));
    m_tracks = trackMedia(m_movie);
    const std::vector<OffsetTable> tables = offsetTables(&m_movie);
    m_hasMediaElsewhere = std::any_of(tables.cbegin(), tables.cend(), [](const OffsetTable &table) {
        return table.mayLeadElsewhere();
    });
    return true;
}

bool MovieTagger::write(OutputFile *out)
{
    for (const FilmFile::TopLevelAtom &atom : m_film.atoms()) {
        bool done = false;
        if (atom.position == m_film.movie().position) {
            std::vector<uint8_t> bytes;
            m_movie.appendTo(&bytes);
            done = out->append(bytes);
        } else if (!m_places.isIdentity() && pointsAtPlaces(atom)) {
            done = writeMoved(atom, out);
        } else {
            done = out->appendFrom(m_film.file(), atom.position, atom.size);
        }
        if (!done)
            return m_error.isEmpty() && out->hasSourceFailed() ? fail(out->errorString()) : false;
    }
    return true;
}

bool MovieTagger::writeMoved(const FilmFile::TopLevelAtom &atom, OutputFile *out)
{
    RawAtom moved;
    if (!m_film.load(atom, &moved))
        return fail(m_film.errorString());
    if (atom.type != FourCC("sidx") && hasMovedItems(moved, m_places))
        return fail(QString::fromLatin1(kMovedItems));
    if (atom.type == FourCC("meta"))
        return out->appendFrom(m_film.file(), atom.position, atom.size);
    const bool fits = atom.type == FourCC("sidx")
        ? relocateSegmentIndex(&moved, atom.end(), m_places)
        : atom.type == FourCC("mfra") ? relocateFragmentIndex(&moved, m_places)
                                      : relocateFragment(&moved, atom.position, m_tracks, m_places);
    // The media of a fragment are counted from its first byte, so it must keep its size.
    if (!fits || moved.size() != atom.size)
        return fail(QStringLiteral("has a fragment that cannot be moved"));
    std::vector<uint8_t> bytes;
    moved.appendTo(&bytes);
    return out->append(bytes);
}

bool MovieTagger::fail(const QString &why)
{
    m_error = why;
    return false;
}
