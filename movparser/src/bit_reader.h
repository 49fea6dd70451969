// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Numbers of up to 32 bits from a run of bytes, high bits first and across byte boundaries.

#include <cstdint>

namespace Tavro::MovParserLib {

class BitReader
{
public:
    /// The bytes are not owned.
    BitReader(const uint8_t *bytes, uint64_t length)
        : m_bytes(bytes)
        , m_bits(8 * length)
    { }

    /// A request for more than 32 bits, or for more than are left, takes nothing, gives 0 and sets
    /// the flag, which may be null.
    uint32_t Take(uint32_t bits, bool *error = nullptr)
    {
        if (bits > 32 || bits > m_bits - m_at) {
            if (error)
                *error = true;
            return 0;
        }
        uint32_t value = 0;
        for (const uint64_t end = m_at + bits; m_at < end; ++m_at)
            value = value << 1 | ((m_bytes[m_at / 8] >> (7 - m_at % 8)) & 1U);
        return value;
    }

private:
    const uint8_t *m_bytes;
    uint64_t m_bits;
    uint64_t m_at = 0;
};

} // namespace Tavro::MovParserLib
