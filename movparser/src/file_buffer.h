// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A memory block with a read/write cursor: what every atom is read from and written to. A block
// read from a file begins at a multiple of the block size, so the wanted bytes may start a little
// into it; positions are counted from the wanted bytes.

#include "movparser/src/generic_buffer.h"

#include <cstring>
#include <memory>

namespace Tavro::MovParserLib {

class FileBuffer : public GenericBuffer
{
public:
    /// Block size and alignment of every block that is read from a file.
    static constexpr unsigned long kBlockSize = 512;

    explicit FileBuffer(BufferAllocator *allocator_ = nullptr)
        : GenericBuffer(allocator_)
    { }

    FileBuffer(FileBuffer &other) = default;
    FileBuffer &operator=(FileBuffer &other) = default;

    /// As in the base class, with the cursor; both buffers are without an owner afterwards.
    void TransferTo(FileBuffer &target);
    void Free();

    using GenericBuffer::Alloc;

    /// A buffer of `size` bytes, cursor at 0. An external block is used as it is and never freed.
    [[nodiscard]] Error Alloc(unsigned long size, void *external_block = nullptr);

    /// Room for the whole blocks of a file that cover `size` bytes from `file_position` on.
    [[nodiscard]] Error Alloc(unsigned long size, long file_position, unsigned long block_size);

    /// Copies `length` bytes from the cursor, or fails with ERROR_BUFFER_EMPTY and copies none.
    [[nodiscard]] Error Read(void *dst, int64_t length)
    {
        if (length == 0)
            return ERROR_OKAY;
        const uint8_t *src = length > 0 ? ReadInPlace(static_cast<uint64_t>(length)) : nullptr;
        if (!src)
            return ERROR_BUFFER_EMPTY;
        std::memcpy(dst, src, static_cast<size_t>(length));
        return ERROR_OKAY;
    }

    /// The `length` bytes at the cursor without a copy, or null when fewer are left.
    const uint8_t *ReadInPlace(uint64_t length)
    {
        if (length > bytes_left || length > read_budget)
            return nullptr;
        const uint8_t *src = GetData() + position;
        read_budget -= length;
        position += length;
        bytes_left -= length;
        return src;
    }

    /// Copies `length` bytes to the cursor, or fails with ERROR_BUFFER_FULL and copies none.
    [[nodiscard]] Error Write(const void *src, int64_t length);

    /// Moves the cursor forward; past the end it stops there with ERROR_BUFFER_OVER_FLOW.
    [[nodiscard]] Error Skip(int64_t length);

    /// Moves the cursor; `whence` is 0 from the start, 1 from the cursor, 2 from the end. A seek
    /// that fails leaves it. Forward from the cursor the very end is refused, from the start it is
    /// allowed: the search for atoms relies on this difference.
    [[nodiscard]] Error Seek(int64_t offset, int whence);

    Error Tell(uint64_t *value) const { return GetPosition(value); }

    uint64_t Tell() const { return position; }

    uint64_t BytesLeft() const { return bytes_left; }

    /// Bounds the bytes that may still be read, over all reads together; no bound by default.
    /// Atoms that overlap in a hostile file have the same bytes read again and again: with a
    /// bound such a tree fails as malformed instead of taking time and memory without end.
    void SetReadBudget(uint64_t bytes) { read_budget = bytes; }

    /// Bounds the memory that may be taken for what is read, all of it together; no bound by
    /// default. A few bytes of a file can ask for an object of hundreds, and atoms that overlap can
    /// do so again and again.
    void SetMemoryBudget(uint64_t bytes) { memory_budget = bytes; }

    /// Counts memory that is about to be taken; false when less than that is allowed.
    [[nodiscard]] bool TakeMemory(uint64_t bytes)
    {
        if (bytes > memory_budget)
            return false;
        memory_budget -= bytes;
        return true;
    }

    /// Tells what keeps the block alive, for those who would rather refer to large parts of it than
    /// copy them. Whoever does so holds the owner. Without one, or once it is gone, null.
    void SetOwner(std::weak_ptr<const void> block_owner) { owner.block = std::move(block_owner); }

    std::shared_ptr<const void> GetOwner() const { return owner.block.lock(); }

    // A getter with a null pointer does nothing.
    Error GetOffset(uint64_t *value) const { return Get(offset, value); }

    Error SetOffset(uint64_t value) { return Set(&offset, value); }

    Error GetFullBufferSize(uint64_t *value) const { return Get(full_buffer_size, value); }

    Error SetFullBufferSize(uint64_t value) { return Set(&full_buffer_size, value); }

    Error GetPosition(uint64_t *value) const { return Get(position, value); }

    Error SetPosition(uint64_t value) { return Set(&position, value); }

    Error GetBytesLeft(uint64_t *value) const { return Get(bytes_left, value); }

    Error SetBytesLeft(uint64_t value) { return Set(&bytes_left, value); }

    Error GetLogicalSize(uint64_t *value) const { return Get(logical_size, value); }

    Error SetLogicalSize(uint64_t value) { return Set(&logical_size, value); }

    /// The first logical byte: the block's first one plus the offset.
    uint8_t *GetData() { return GetBytes() + offset; }

    const uint8_t *GetData() const { return GetBytes() + offset; }

    /// Equal when the logical bytes are.
    bool operator==(const FileBuffer &other) const;

protected:
    /// Rises with each allocation and release, also when the block stays the same.
    uint64_t GetFillCount() const { return fill_count; }

    uint64_t offset = 0; ///< Where the logical data begins inside the block.
    uint64_t full_buffer_size = 0; ///< The whole block; for file reads a multiple of its size.
    uint64_t position = 0; ///< The cursor, from `offset` on.
    uint64_t bytes_left = 0; ///< From the cursor to the logical end.
    uint64_t logical_size = 0;

private:
    static Error Get(uint64_t field, uint64_t *value)
    {
        if (value)
            *value = field;
        return ERROR_OKAY;
    }

    static Error Set(uint64_t *field, uint64_t value)
    {
        *field = value;
        return ERROR_OKAY;
    }

    Error Describe(Error allocation, uint64_t new_offset, uint64_t block, uint64_t size);

    void MoveTo(uint64_t new_position)
    {
        position = new_position;
        bytes_left = logical_size - new_position;
    }

    uint64_t fill_count = 0;
    uint64_t read_budget = UINT64_MAX;
    uint64_t memory_budget = UINT64_MAX;

    // Stays behind when the buffer is copied: the copy has a block of its own, which the owner of
    // the first one does not keep.
    struct Owner
    {
        std::weak_ptr<const void> block;

        Owner() = default;

        Owner(const Owner &) { }

        Owner &operator=(const Owner &)
        {
            block.reset();
            return *this;
        }
    };

    Owner owner;
};

} // namespace Tavro::MovParserLib
