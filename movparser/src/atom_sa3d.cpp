// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_sa3d.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <numeric>

namespace Tavro::MovParserLib {

namespace {

/// The largest order whose number of channels fits its field.
constexpr uint32_t kMaxOrder = 30;

} // namespace

MovAtom::Error spatialAudioAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    // A field that cannot be read is 0 afterwards.
    const auto readOrZero = [&buffer](auto *field) {
        *field = 0;
        return ReadNumber(buffer, field);
    };
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    channel_map.clear();
    MOV_READ(scope, readOrZero(&version));
    MOV_READ(scope, readOrZero(&ambisonic_type));
    MOV_READ(scope, readOrZero(&ambisonic_order));
    MOV_READ(scope, readOrZero(&ambisonic_channel_ordering));
    MOV_READ(scope, readOrZero(&ambisonic_normalization));
    MOV_READ(scope, readOrZero(&num_channels));
    if (ReadTable(buffer, num_channels, &channel_map) != ERROR_OKAY) {
        num_channels = 0;
        return scope.Fail();
    }
    return scope.Finish(size);
}

MovAtom::Error spatialAudioAtom::Write(FileBuffer &buffer)
{
    // Asked before memory is taken for a map that would not fit anyway.
    if (ambisonic_order > kMaxOrder || GetSize() > buffer.BytesLeft())
        return ERROR_ATOM_WRITE_FAILED;
    MOV_WRITE(OrNoMemory([this] {
        const bool isNew = channel_map.empty();
        // The order may ask for another number of channels than the map has; the new ones are 0.
        channel_map.resize(WrittenChannels());
        if (isNew && ambisonic_channel_ordering == 0)
            std::iota(channel_map.begin(), channel_map.end(), 0);
        return ERROR_OKAY;
    }));
    num_channels = WrittenChannels();
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(
        WriteFields(buffer,
                    std::tie(version, ambisonic_type, ambisonic_order, ambisonic_channel_ordering,
                             ambisonic_normalization, num_channels)));
    return WriteTable(buffer, channel_map);
}

void spatialAudioAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "spatialAudioAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "version: %u", version);
    PrintLine(out, block.Depth(), "ambisonic_type: %u", ambisonic_type);
    PrintLine(out, block.Depth(), "ambisonic_order: %u", ambisonic_order);
    PrintLine(out, block.Depth(), "ambisonic_channel_ordering: %u", ambisonic_channel_ordering);
    PrintLine(out, block.Depth(), "ambisonic_normalization: %u", ambisonic_normalization);
    PrintLine(out, block.Depth(), "num_channels: %u", num_channels);
    for (size_t i = 0; i < channel_map.size(); ++i)
        PrintLine(out, block.Depth(), "channel_map[%zu]: %u", i, channel_map[i]);
}

uint64_t spatialAudioAtom::GetSize() const
{
    return MovAtom::GetSize() + 12 + uint64_t{4} * WrittenChannels();
}

uint32_t spatialAudioAtom::WrittenChannels() const
{
    // 2 to the power of order + 1, not the square of order + 1 that a full sound field of that
    // order has; the two agree for an order of 1.
    return ambisonic_order != 0 && ambisonic_order <= kMaxOrder ? 1U << (ambisonic_order + 1)
                                                                : num_channels;
}

} // namespace Tavro::MovParserLib
