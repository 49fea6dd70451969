// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The bytes of one sample with its place in time.

#include "movparser/src/file_buffer.h"

namespace Tavro::MovParserLib {

class SampleBuffer : public FileBuffer
{
public:
    explicit SampleBuffer(BufferAllocator *allocator_ = nullptr)
        : FileBuffer(allocator_)
    { }

    bool GetIsKey() const { return is_key; }

    void SetIsKey(bool key) { is_key = key; }

    /// Dumps to standard output: where the bytes are, and the bytes.
    void printInfos() const;
    void printDatas() const;

    uint64_t timestamp = 0; ///< In the units of whoever fills the buffer.
    uint64_t duration = 0; ///< In the same units.
    bool is_key = false;
};

} // namespace Tavro::MovParserLib
