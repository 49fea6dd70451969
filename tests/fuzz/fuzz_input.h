// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The fuzzer's bytes as a buffer of the library.

#include "movparser/src/file_buffer.h"

#include <memory>

/// A copy whose block ends where the bytes end, so that the sanitizer sees a read or a write behind
/// them. `size` must not be 0.
template <class Buffer = Tavro::MovParserLib::FileBuffer> class FuzzInput
{
public:
    FuzzInput(const uint8_t *data, size_t size)
        : m_block(new uint8_t[size])
    {
        std::memcpy(m_block.get(), data, size);
        static_cast<void>(m_buffer.Alloc(size, m_block.get()));
    }

    Buffer &buffer() { return m_buffer; }

private:
    std::unique_ptr<uint8_t[]> m_block;
    Buffer m_buffer;
};
