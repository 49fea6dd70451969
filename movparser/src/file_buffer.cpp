// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/file_buffer.h"

#include <cassert>
#include <climits>

namespace Tavro::MovParserLib {

void FileBuffer::TransferTo(FileBuffer &target)
{
    if (this == &target)
        return;
    GenericBuffer::TransferTo(target);
    target.Describe(ERROR_OKAY, offset, full_buffer_size, logical_size);
    target.MoveTo(position);
    target.read_budget = read_budget;
    target.memory_budget = memory_budget;
    // Neither keeps the block alive: it has moved to where only `target` does.
    owner.block.reset();
    target.owner.block.reset();
    Free();
}

void FileBuffer::Free()
{
    GenericBuffer::Free();
    Describe(ERROR_OKAY, 0, 0, 0);
}

FileBuffer::Error FileBuffer::Alloc(unsigned long size, void *external_block)
{
    if (external_block)
        Free(); // else a block that is owned and large enough would be kept
    return Describe(GenericBuffer::Alloc(size, external_block ? 0 : kBlockSize, external_block), 0,
                    size, size);
}

FileBuffer::Error FileBuffer::Alloc(unsigned long size, long file_position,
                                    unsigned long block_size)
{
    const unsigned long head = static_cast<unsigned long>(file_position) % block_size;
    file_position -= static_cast<long>(head);
    assert((file_position % static_cast<int64_t>(block_size)) == 0);
    if (size > ULONG_MAX - (block_size + head)) {
        // No memory holds it, and the sum below would wrap.
        Free();
        return ERROR_MEM_ALLOC;
    }
    unsigned long temp_full_buffer_size = size + block_size + head - 1;
    temp_full_buffer_size -= temp_full_buffer_size % block_size;
    assert((temp_full_buffer_size % block_size) == 0);
    return Describe(GenericBuffer::Alloc(temp_full_buffer_size, kBlockSize, nullptr), head,
                    temp_full_buffer_size, size);
}

// Sets the members that go with a new block, or with none when its allocation failed.
FileBuffer::Error FileBuffer::Describe(Error allocation, uint64_t new_offset, uint64_t block,
                                       uint64_t size)
{
    const bool okay = allocation == ERROR_OKAY;
    ++fill_count;
    offset = okay ? new_offset : 0;
    full_buffer_size = okay ? block : 0;
    logical_size = okay ? size : 0;
    MoveTo(0);
    return allocation;
}

FileBuffer::Error FileBuffer::Write(const void *src, int64_t length)
{
    const uint64_t count = static_cast<uint64_t>(length);
    if (count > bytes_left)
        return ERROR_BUFFER_FULL;
    if (count != 0)
        std::memcpy(GetData() + position, src, count);
    position += count;
    bytes_left -= count;
    return ERROR_OKAY;
}

FileBuffer::Error FileBuffer::Skip(int64_t length)
{
    const uint64_t count = static_cast<uint64_t>(length);
    if (count > bytes_left) {
        MoveTo(logical_size);
        return ERROR_BUFFER_OVER_FLOW;
    }
    position += count;
    bytes_left -= count;
    return ERROR_OKAY;
}

FileBuffer::Error FileBuffer::Seek(int64_t distance, int whence)
{
    // The magnitude, also of the smallest number.
    const uint64_t back = distance < 0 ? 0 - static_cast<uint64_t>(distance) : 0;
    const uint64_t forward = distance < 0 ? 0 : static_cast<uint64_t>(distance);
    switch (whence) {
    case 0:
        if (distance < 0)
            return ERROR_BUFFER_UNDER_FLOW;
        if (forward > logical_size)
            return ERROR_BUFFER_OVER_FLOW;
        MoveTo(forward);
        return ERROR_OKAY;
    case 1:
        if (back > position)
            return ERROR_BUFFER_UNDER_FLOW;
        if (distance >= 0 && forward >= bytes_left)
            return ERROR_BUFFER_OVER_FLOW;
        MoveTo(position + forward - back);
        return ERROR_OKAY;
    case 2:
        if (distance >= 0)
            return ERROR_BUFFER_OVER_FLOW;
        if (back > logical_size)
            return ERROR_BUFFER_UNDER_FLOW;
        MoveTo(logical_size - back);
        return ERROR_OKAY;
    default:
        return ERROR_INVALID_ARG;
    }
}

bool FileBuffer::operator==(const FileBuffer &other) const
{
    return logical_size == other.logical_size
        && (logical_size == 0 || std::memcmp(GetData(), other.GetData(), logical_size) == 0);
}

} // namespace Tavro::MovParserLib
