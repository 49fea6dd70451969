// SPDX-License-Identifier: GPL-3.0-or-later
// How a recording of the maker's own cameras is told.
#include "movparser/src/atom_io.h"
#include "movparser/src/mov_file_reader.h"

#include <string_view>

namespace Tavro::MovParserLib {

namespace {

constexpr std::string_view kMaker = "Tavro";

// The four bytes at `position` as a number, 0 where bytes are missing.
uint32_t WordAt(std::string_view bytes, uint64_t position)
{
    return position <= bytes.size() && bytes.size() - position >= 4
        ? DecodeNumber<uint32_t>(reinterpret_cast<const uint8_t *>(bytes.data() + position))
        : 0;
}

// The payload of the first atom of a type in a row of atoms, empty when there is none.
std::string_view FindPayload(std::string_view atoms, uint32_t type)
{
    while (atoms.size() >= 8) {
        const uint32_t size = WordAt(atoms, 0);
        if (size < 8 || size > atoms.size())
            break;
        if (WordAt(atoms, 4) == type)
            return atoms.substr(8, size - 8);
        atoms.remove_prefix(size);
    }
    return {};
}

// Whether the list of a tagging program in `meta` names the maker as the encoding tool.
bool NamesMaker(std::string_view meta)
{
    if (WordAt(meta, 8) != FourCC("hdlr") || WordAt(meta, 20) != FourCC("mdir"))
        return false;
    // The handler's name has any length, so the list may begin at any byte behind it.
    for (uint64_t atom = 28; atom + 8 <= meta.size(); ++atom) {
        if (WordAt(meta, atom + 4) != FourCC("ilst"))
            continue;
        const std::string_view tool = FindPayload(meta.substr(atom + 8), FourCC("\xA9too"));
        const std::string_view data = FindPayload(tool, FourCC("data"));
        return WordAt(data, 0) == 1 && data.size() >= 8 && data.substr(8) == kMaker;
    }
    return false;
}

} // namespace

uint32_t MovFileReader::IsTavroFile(bool *result) const
{
    if (!result)
        return InvalidArgument();
    *result = false;
    if (movie.tracks.empty())
        return NoTrack();
    char name[256];
    MovAtom::Error error = movie.tracks.front().GetName(name);
    if (error == MovAtom::ERROR_OKAY && name[0] == '\0')
        error = MovAtom::ERROR_MALFORMED_ATOM;
    if (error != MovAtom::ERROR_OKAY)
        return Report(error);
    if (std::string_view(name).find(kMaker) != std::string_view::npos) {
        *result = true;
        return 0;
    }
    if (!movie.user_data)
        return 0;
    const char *firmware = nullptr;
    if (movie.user_data->GetFirmware(&firmware) == MovAtom::ERROR_OKAY && firmware) {
        *result = true;
        return 0;
    }
    const auto meta = movie.user_data->unparsed.find(FourCC("meta"));
    if (meta != movie.user_data->unparsed.end())
        *result = NamesMaker({reinterpret_cast<const char *>(meta->second.Data()),
                              static_cast<size_t>(meta->second.DataSize())});
    return 0;
}

} // namespace Tavro::MovParserLib
