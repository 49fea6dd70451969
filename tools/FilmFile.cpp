// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/FilmFile.h"

#include "movparser/src/mov_file_reader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

using Tavro::MovParserLib::FourCC;
using Tavro::MovParserLib::MovFileReader;

namespace {
/// How many bytes could be read.
size_t readAt(int file, uint64_t position, uint8_t *to, size_t length)
{
    size_t done = 0;
    while (done < length) {
        const ssize_t got =
            pread(file, to + done, length - done, static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += static_cast<size_t>(got);
    }
    return done;
}
} // namespace

bool FilmFile::open(int file)
{
    m_file = file;
    struct stat info = {};
    if (fstat(file, &info) != 0 || !S_ISREG(info.st_mode))
        return fail("is not a file");
    const auto fileSize = static_cast<uint64_t>(info.st_size);
    for (uint64_t position = 0; position < fileSize;) {
        uint8_t head[16];
        const uint64_t left = fileSize - position;
        const size_t length = static_cast<size_t>(std::min<uint64_t>(left, sizeof head));
        AtomHeader header;
        if (readAt(m_file, position, head, length) != length)
            return fail("cannot be read");
        TopLevelAtom atom{0, position, 0, left, false};
        if (header.parse(head, left)) {
            atom.type = header.type;
            atom.headerSize = header.headerSize;
            // The media data of a cut recording claims more than the file has.
            atom.size = header.size == 0 ? left : std::min(header.size, left);
            atom.isCut = header.size > left;
        }
        if (m_atoms.size() == RawAtom::kMaxAtoms)
            throw TooManyAtoms();
        m_atoms.push_back(atom);
        position += atom.size;
    }
    const auto movie = std::find_if(m_atoms.cbegin(), m_atoms.cend(), [](const TopLevelAtom &atom) {
        return atom.type == FourCC("moov");
    });
    m_movie = static_cast<size_t>(movie - m_atoms.cbegin());
    return movie != m_atoms.cend() || fail("has no movie atom");
}

bool FilmFile::load(const TopLevelAtom &atom, RawAtom *into)
{
    // What is larger cannot be played either; a file with a hole in it may claim any size.
    if (atom.size > MovFileReader::kMaxMovieSize)
        return fail("has an atom that is too large");
    into->type = atom.type;
    into->origin = atom.position + atom.headerSize;
    into->fields = bytes(into->origin, atom.size - atom.headerSize);
    return into->fields.size() == atom.size - atom.headerSize || fail("cannot be read");
}

std::vector<uint8_t> FilmFile::bytes(uint64_t position, size_t length) const
{
    std::vector<uint8_t> there(length);
    there.resize(readAt(m_file, position, there.data(), length));
    return there;
}

bool FilmFile::fail(const char *why)
{
    m_error = QString::fromLatin1(why);
    return false;
}
