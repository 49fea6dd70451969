// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as a sample of H.264: the first one says in which format, the others are split.

#include "movparser/src/sample_pool_buffer.h"
#include "tests/movparser/box.h"

#include <cstdlib>
#include <stdexcept>

using namespace Tavro::MovParserLib;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    ExactBuffer<SamplePoolBuffer> input(data + 1, size - 1);
    SamplePoolBuffer &pool = *input;
    pool.format = static_cast<SamplePoolBuffer::Format>(data[0] % 3);
    const size_t count = pool.Parse();
    if (count != pool.GetPieceCount() || pool.GetPiece(count))
        std::abort();
    if (count != 0 && count != pool.Parse()) // without pieces it is a new attempt
        std::abort();

    // The pieces follow each other within the sample; reading each byte shows one that does not.
    const uint8_t *end = pool.GetData();
    unsigned sum = 0;
    for (size_t i = 0; i < count; ++i) {
        SampleBuffer *piece = pool.GetPiece(i);
        if (piece->GetData() < end)
            std::abort();
        uint64_t length = 0;
        piece->GetLogicalSize(&length);
        end = piece->GetData() + length;
        for (const uint8_t *byte = piece->GetData(); byte != end; ++byte)
            sum += *byte;
    }
    if (end > pool.GetData() + size - 1 || sum > 255 * size)
        std::abort();

    const std::deque<uint64_t> times(count);
    pool.SetTimes(times, times, std::deque<bool>(count));
    if (count > 0) {
        try {
            pool.SetTimes(times, std::deque<uint64_t>(count - 1), std::deque<bool>(count));
            std::abort();
        } catch (const std::out_of_range &) {
        }
    }
    return 0;
}
