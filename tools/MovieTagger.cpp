// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/MovieTagger.h"

#include "movparser/src/mov_file_reader.h"
#include "tools/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

using Tavro::MovParserLib::FourCC;
using Tavro::MovParserLib::MovFileReader;

namespace {
constexpr char kMovedItems[] = "has items whose places in the file cannot be moved";

/// Whether a top-level atom beside the movie may say where in the file something lies.
bool pointsAtPlaces(uint32_t type)
{
    switch (type) {
    case FourCC("meta"):
    case FourCC("mfra"):
    case FourCC("moof"):
    case FourCC("sidx"):
        return true;
    default:
        return false;
    }
}

bool readAt(int file, uint64_t position, uint8_t *to, size_t length)
{
    while (length > 0) {
        const ssize_t got = pread(file, to, length, static_cast<off_t>(position));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        to += got;
        position += static_cast<uint64_t>(got);
        length -= static_cast<size_t>(got);
    }
    return true;
}
} // namespace

bool MovieTagger::read(int file)
{
    m_file = file;
    struct stat info = {};
    if (fstat(file, &info) != 0 || !S_ISREG(info.st_mode))
        return fail(QStringLiteral("is not a file"));
    if (!scan(static_cast<uint64_t>(info.st_size)))
        return false;
    const auto movie = std::find_if(m_atoms.cbegin(), m_atoms.cend(), [](const TopLevelAtom &atom) {
        return atom.type == FourCC("moov");
    });
    if (movie == m_atoms.cend())
        return fail(QStringLiteral("has no movie atom"));
    m_oldMovie = *movie;
    return load(m_oldMovie, &m_movie);
}

bool MovieTagger::scan(uint64_t fileSize)
{
    for (uint64_t position = 0; position < fileSize;) {
        uint8_t bytes[16];
        const uint64_t left = fileSize - position;
        AtomHeader header;
        if (!readAt(m_file, position, bytes, std::min<uint64_t>(left, sizeof bytes)))
            return fail(QStringLiteral("cannot be read"));
        TopLevelAtom atom{0, position, 0, left};
        if (header.parse(bytes, left)) {
            atom.type = header.type;
            atom.headerSize = header.headerSize;
            // The media data of a cut recording claims more than the file has.
            atom.size = header.size == 0 ? left : std::min(header.size, left);
        }
        if (m_atoms.size() == RawAtom::kMaxAtoms)
            throw TooManyAtoms();
        m_atoms.push_back(atom);
        position += atom.size;
    }
    return true;
}

bool MovieTagger::load(const TopLevelAtom &atom, RawAtom *into)
{
    // What is larger cannot be played either; a file with a hole in it may claim any size.
    if (atom.size > MovFileReader::kMaxMovieSize)
        return fail(QStringLiteral("has an atom that is too large"));
    into->type = atom.type;
    into->fields.resize(atom.size - atom.headerSize);
    if (!readAt(m_file, atom.position + atom.headerSize, into->fields.data(), into->fields.size()))
        return fail(QStringLiteral("cannot be read"));
    return true;
}

bool MovieTagger::apply(const MovieTags &tags)
{
    QString why;
    if (!tagFirstVideoTrack(&m_movie, tags, &why, &m_lost))
        return fail(why);
    m_shift = relocateTables(&m_movie, m_oldMovie.size, m_oldMovie.position + m_oldMovie.size);
    if (m_shift.distance != 0 && hasMovedItems(m_movie, m_shift))
        return fail(QString::fromLatin1(kMovedItems));
    return true;
}

bool MovieTagger::write(OutputFile *out)
{
    for (const TopLevelAtom &atom : m_atoms) {
        bool done = false;
        if (atom.position == m_oldMovie.position) {
            std::vector<uint8_t> bytes;
            m_movie.appendTo(&bytes);
            done = out->append(bytes);
        } else if (m_shift.distance != 0 && pointsAtPlaces(atom.type)) {
            done = writeMoved(atom, out);
        } else {
            done = out->appendFrom(m_file, atom.position, atom.size);
        }
        if (!done)
            return m_error.isEmpty() && out->hasSourceFailed() ? fail(out->errorString()) : false;
    }
    return true;
}

bool MovieTagger::writeMoved(const TopLevelAtom &atom, OutputFile *out)
{
    RawAtom moved;
    if (!load(atom, &moved))
        return false;
    if (atom.type != FourCC("sidx") && hasMovedItems(moved, m_shift))
        return fail(QString::fromLatin1(kMovedItems));
    if (atom.type == FourCC("meta"))
        return out->appendFrom(m_file, atom.position, atom.size);
    const bool fits = atom.type == FourCC("sidx")
        ? relocateSegmentIndex(&moved, atom.position + atom.size, m_shift)
        : relocateFragment(&moved, m_shift);
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
