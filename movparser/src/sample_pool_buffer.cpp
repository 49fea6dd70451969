// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/sample_pool_buffer.h"

#include "movparser/src/atom_io.h"

#include <algorithm>

namespace Tavro::MovParserLib {

namespace {

constexpr uint64_t kPrefixSize = 4;

} // namespace

size_t SamplePoolBuffer::Parse()
{
    if (!IsParsed()) {
        pieces.clear();
        // A format that was told and not detected holds for the next sample too.
        if (format == detected_format)
            format = kUnknownFormat;
    }
    if (!pieces.empty())
        return pieces.size();
    if (format == kUnknownFormat)
        format = detected_format = DetectFormat();
    parsed_data = GetData();
    parsed_fill = GetFillCount();
    parsed_size = logical_size;
    group_begin = kNoGroup;
    if (format == kStartCodes)
        SplitStartCodes();
    else if (format == kLengthPrefixes)
        SplitLengthPrefixes();
    return pieces.size();
}

bool SamplePoolBuffer::IsParsed() const
{
    return parsed_data == GetData() && parsed_fill == GetFillCount() && parsed_size == logical_size;
}

size_t SamplePoolBuffer::GetPieceCount() const
{
    return IsParsed() ? pieces.size() : 0;
}

SamplePoolBuffer::Format SamplePoolBuffer::DetectFormat() const
{
    const uint8_t *bytes = GetData();
    if (logical_size >= 4 && std::equal(start_code.begin(), start_code.end(), bytes))
        return kStartCodes;
    if (logical_size >= 3 && std::equal(start_code.begin() + 1, start_code.end(), bytes))
        return kStartCodes;
    if (logical_size < kPrefixSize || DecodeNumber<uint32_t>(bytes) > logical_size)
        return kUnknownFormat;
    return kLengthPrefixes;
}

// A unit that runs to the end of the sample, or past it, ends the walk without being taken: only
// what is followed by another unit is known to be whole.
void SamplePoolBuffer::SplitLengthPrefixes()
{
    uint64_t begin = 0;
    while (begin + kPrefixSize < logical_size) {
        const uint64_t length = DecodeNumber<uint32_t>(GetData() + begin);
        const uint64_t end = begin + kPrefixSize + length;
        if (end >= logical_size)
            return;
        TakeUnit(begin, end);
        begin = end;
    }
}

// A code in the last four bytes is not looked for: it would begin an empty unit.
void SamplePoolBuffer::SplitStartCodes()
{
    const auto findCode = [this](uint64_t from) {
        if (logical_size < kPrefixSize || from > logical_size - kPrefixSize)
            return logical_size;
        const uint8_t *bytes = GetData();
        const uint8_t *end = bytes + logical_size - 1;
        const uint8_t *found = std::search(bytes + from, end, start_code.begin(), start_code.end());
        return found == end ? logical_size : static_cast<uint64_t>(found - bytes);
    };
    uint64_t begin = findCode(0);
    while (begin < logical_size) {
        const uint64_t end = findCode(begin + kPrefixSize);
        EncodeNumber(static_cast<uint32_t>(end - begin - kPrefixSize), GetData() + begin);
        TakeUnit(begin, end);
        begin = end;
    }
}

// One unit with its length prefix: parameter sets and the like open a group, a picture closes it.
void SamplePoolBuffer::TakeUnit(uint64_t begin, uint64_t end)
{
    if (end - begin <= kPrefixSize)
        return; // a unit without a byte has no type
    const uint8_t first = GetData()[begin + kPrefixSize];
    const uint8_t type = first & 31;
    const bool opensGroup = type == 1 || type == 5 || type == 6 || type == 9;
    if (opensGroup && group_begin == kNoGroup)
        group_begin = begin;
    if (type == 5)
        is_key = true;
    // Types 1 and 5, whatever the reference bits say.
    if ((first & 27) != 1 || group_begin == kNoGroup)
        return;
    auto piece = std::make_unique<SampleBuffer>();
    if (piece->Alloc(end - group_begin, GetData() + group_begin) == ERROR_OKAY) {
        piece->timestamp = timestamp;
        piece->duration = duration;
        piece->is_key = is_key;
        pieces.push_back(std::move(piece));
    }
    group_begin = kNoGroup;
}

SampleBuffer *SamplePoolBuffer::GetPiece(size_t index) const
{
    return index < GetPieceCount() ? pieces[index].get() : nullptr;
}

void SamplePoolBuffer::SetTimes(const std::deque<uint64_t> &timestamps,
                                const std::deque<uint64_t> &durations, const std::deque<bool> &keys)
{
    for (size_t i = 0; i < GetPieceCount(); ++i) {
        pieces[i]->timestamp = timestamps.at(i);
        pieces[i]->duration = durations.at(i);
        pieces[i]->is_key = keys.at(i);
    }
}

} // namespace Tavro::MovParserLib
