// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `SETT`: how the camera was set. The words of the payload are kept, and bit fields are decoded;
// what the fields mean is not established, they are known by their places.

#include "movparser/src/mov_atom.h"

#include <array>
#include <vector>

namespace Tavro::MovParserLib {

/// The decoded fields, in the order in which they lie in the bits.
struct TavroCameraSettings
{
    std::array<uint8_t, 13> first = {}; ///< From 4 payload bytes on.
    std::array<uint8_t, 11> second = {}; ///< From 8 on.
    uint8_t third = 0; ///< From 12 on.
    uint32_t fourth = 0; ///< From 16 on.
};

class TavroCameraSettingsAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("SETT");

    TavroCameraSettingsAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The words as bytes, or null without payload.
    uint8_t *GetData()
    {
        return m_bytes == 0 ? nullptr : reinterpret_cast<uint8_t *>(m_words.data());
    }

    /// Bytes of the payload.
    uint32_t GetLength() const { return m_bytes; }

    TavroCameraSettings settings;

private:
    std::vector<uint32_t> m_words; ///< In host order; the last one is filled up with 0.
    uint32_t m_bytes = 0;
};

} // namespace Tavro::MovParserLib
