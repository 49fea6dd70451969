// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_sett.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"
#include "movparser/src/bit_reader.h"

namespace Tavro::MovParserLib {

namespace {

constexpr std::array<uint8_t, 13> kFirstWidths = {4, 4, 8, 1, 3, 1, 1, 2, 2, 2, 2, 1, 1};
constexpr std::array<uint8_t, 11> kSecondWidths = {1, 2, 1, 1, 1, 2, 1, 3, 4, 2, 2};

template <size_t N>
void TakeAll(BitReader *bits, const std::array<uint8_t, N> &widths, std::array<uint8_t, N> *fields)
{
    for (size_t i = 0; i < N; ++i)
        (*fields)[i] = static_cast<uint8_t>(bits->Take(widths[i]));
}

TavroCameraSettings Decode(const uint8_t *bytes, uint64_t length)
{
    BitReader bits(bytes, length);
    TavroCameraSettings settings;
    if (length >= 4)
        TakeAll(&bits, kFirstWidths, &settings.first);
    if (length >= 8)
        TakeAll(&bits, kSecondWidths, &settings.second);
    if (length >= 12) {
        bits.Take(28);
        settings.third = static_cast<uint8_t>(bits.Take(4));
    }
    if (length >= 16)
        settings.fourth = bits.Take(32);
    return settings;
}

} // namespace

MovAtom::Error TavroCameraSettingsAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    const uint64_t start = buffer.Tell();
    std::vector<uint8_t> payload;
    m_words.clear();
    m_bytes = 0;
    settings = {};
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    if (size > GetHeaderSize()) {
        MOV_READ(scope, ReadBytes(buffer, size - GetHeaderSize(), &payload));
        m_bytes = static_cast<uint32_t>(payload.size());
        // The fields are decoded from as many bytes as the payload has, but from the atom's own
        // preamble on: each field comes from 8 bytes before its place in the payload.
        settings = Decode(buffer.GetData() + start, m_bytes);
        MOV_READ(scope, MakeRoom(buffer, payload.size(), [&] {
                     payload.resize((payload.size() + 3) / 4 * 4);
                     for (size_t i = 0; i < payload.size(); i += 4)
                         m_words.push_back(DecodeNumber<uint32_t>(&payload[i]));
                 }));
    }
    return scope.Finish(size);
}

MovAtom::Error TavroCameraSettingsAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    // The words go out as they stand in memory, so reading and writing reverses the bytes of each.
    return m_bytes == 0 ? ERROR_OKAY : WriteBytes(buffer, m_words.data(), m_bytes);
}

void TavroCameraSettingsAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SETTAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintTable(out, block.Depth(), "Camera Settings: ", m_words,
               [out](uint32_t word) { PrintText(out, "%08x ", word); });
}

uint64_t TavroCameraSettingsAtom::GetSize() const
{
    return MovAtom::GetSize() + m_bytes;
}

} // namespace Tavro::MovParserLib
