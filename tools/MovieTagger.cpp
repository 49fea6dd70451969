// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/MovieTagger.h"

#include "movparser/src/mov_atom.h"
#include "tools/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

using Tavro::MovParserLib::FourCC;

namespace {
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
        m_atoms.push_back(atom);
        position += atom.size;
    }
    return true;
}

bool MovieTagger::load(const TopLevelAtom &atom, RawAtom *into)
{
    into->type = atom.type;
    try {
        into->fields.resize(atom.size - atom.headerSize);
    } catch (const std::bad_alloc &) {
        return fail(QStringLiteral("has an atom larger than the memory"));
    }
    if (!readAt(m_file, atom.position + atom.headerSize, into->fields.data(), into->fields.size()))
        return fail(QStringLiteral("cannot be read"));
    return true;
}

bool MovieTagger::apply(const MovieTags &tags)
{
    QString why;
    if (!tagFirstVideoTrack(&m_movie, tags, &why, &m_lost))
        return fail(why);
    m_shift = relocateChunks(&m_movie, m_oldMovie.size, m_oldMovie.position + m_oldMovie.size);
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
        } else if (m_shift.distance != 0
                   && (atom.type == FourCC("moof") || atom.type == FourCC("mfra"))) {
            done = writeFragment(atom, out);
        } else {
            done = out->appendFrom(m_file, atom.position, atom.size);
        }
        if (!done)
            return fail(m_error.isEmpty() ? out->errorString() : m_error);
    }
    return true;
}

bool MovieTagger::writeFragment(const TopLevelAtom &atom, OutputFile *out)
{
    RawAtom fragment;
    if (!load(atom, &fragment))
        return false;
    // The media of a fragment are counted from its first byte, so it must keep its size.
    if (!relocateFragment(&fragment, m_shift) || fragment.size() != atom.size)
        return fail(QStringLiteral("has a fragment that cannot be moved"));
    std::vector<uint8_t> bytes;
    fragment.appendTo(&bytes);
    return out->append(bytes);
}

bool MovieTagger::fail(const QString &why)
{
    m_error = why;
    return false;
}
