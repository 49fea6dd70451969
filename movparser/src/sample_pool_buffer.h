// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Splits one sample of H.264 into the groups of units that make a picture each.

#include "movparser/src/sample_buffer.h"

#include <array>
#include <deque>
#include <memory>

namespace Tavro::MovParserLib {

class SamplePoolBuffer : public SampleBuffer
{
public:
    enum Format : uint32_t {
        kUnknownFormat = 0,
        kStartCodes = 1,
        kLengthPrefixes = 2
    };

    using SampleBuffer::SampleBuffer;

    /// Splits the sample once and returns the number of pieces, also when called again.
    ///
    /// The pieces refer to the bytes of this buffer and are valid as long as it holds them: once it
    /// is filled anew there are none, and the next call splits again. With
    /// start codes each code is overwritten by the length of its unit: the stored form is length
    /// prefixes then. 0 when nothing can be split.
    size_t Parse();

    size_t GetPieceCount() const;

    /// Null behind the last one.
    SampleBuffer *GetPiece(size_t index) const;

    /// Assigns a time, a duration and a key flag to each piece. Throws std::out_of_range when a
    /// queue is shorter than the number of pieces.
    void SetTimes(const std::deque<uint64_t> &timestamps, const std::deque<uint64_t> &durations,
                  const std::deque<bool> &keys);

    Format format = kUnknownFormat;

private:
    /// Whether the pieces are those of what the buffer holds.
    bool IsParsed() const;
    Format DetectFormat() const;
    void SplitLengthPrefixes();
    void SplitStartCodes();
    void TakeUnit(uint64_t begin, uint64_t end);

    static constexpr uint64_t kNoGroup = UINT64_MAX;

    std::array<uint8_t, 4> start_code = {0, 0, 0, 1};
    std::deque<std::unique_ptr<SampleBuffer>> pieces;
    Format detected_format = kUnknownFormat;
    const uint8_t *parsed_data = nullptr;
    uint64_t parsed_fill = 0;
    uint64_t parsed_size = 0;
    uint64_t group_begin = kNoGroup; ///< The open group's first byte while parsing.
};

} // namespace Tavro::MovParserLib
