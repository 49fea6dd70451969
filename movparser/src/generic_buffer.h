// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A block of memory with an optional alignment and an optional allocator. The base of every
// buffer of the library; it never throws and reports failures by its own error codes.

#include <cstdint>

namespace Tavro::MovParserLib {

/// Where a GenericBuffer takes its blocks from instead of the system's heap.
class BufferAllocator
{
public:
    virtual ~BufferAllocator() = default;

    virtual void *Alloc(unsigned long size) = 0;
    virtual void Free(void *ptr) = 0;
    virtual void *AllocAligned(unsigned long size, unsigned long alignment) = 0;
    virtual void FreeAligned(void *ptr) = 0;
};

/// Owns one block of memory, or refers to a block that belongs to someone else.
class GenericBuffer
{
public:
    enum Error : uint32_t {
        ERROR_OKAY,
        ERROR_MEM_ALLOC,
        ERROR_ALLOCATOR_EXISTS,
        ERROR_BUFFER_EMPTY,
        ERROR_BUFFER_FULL,
        ERROR_BUFFER_OVER_FLOW,
        ERROR_BUFFER_UNDER_FLOW,
        ERROR_INVALID_ARG,
        ERROR_MALFORMED_OBJECT
    };

    /// The allocator is not owned and must outlive the buffer.
    explicit GenericBuffer(BufferAllocator *allocator = nullptr);
    virtual ~GenericBuffer();

    /// A copy takes the block over: the source goes on seeing it but no longer frees it, so the
    /// source must not be used after the copy is gone. Hence the argument is not const.
    GenericBuffer(GenericBuffer &other);
    GenericBuffer &operator=(GenericBuffer &other);

    /// Moves the block to `target`, which frees its own first, and leaves this buffer empty.
    void TransferTo(GenericBuffer &target);

    /// Makes the buffer hold at least `size` bytes at an address that `alignment` divides.
    ///
    /// A block that is owned, large enough and aligned as strictly is kept, also when an external
    /// block is given. A size of 0 is for empty buffers only and changes nothing.
    [[nodiscard]] Error Alloc(unsigned long size, unsigned long alignment, void *external_block);

    /// Fails with ERROR_ALLOCATOR_EXISTS once an allocator is set. A block that is held goes back
    /// to where it came from all the same.
    [[nodiscard]] Error SetAllocator(BufferAllocator *allocator);

    /// Gives the block back unless it is external; the buffer is empty afterwards.
    void Free();

    /// The block's first byte, or null.
    uint8_t *GetBytes() { return static_cast<uint8_t *>(buffer); }

    const uint8_t *GetBytes() const { return static_cast<const uint8_t *>(buffer); }

protected:
    void *buffer = nullptr;
    uint64_t buffer_size = 0;
    uint64_t alignment = 0; ///< As asked for at allocation; 0 for none.
    bool external = false; ///< The block is someone else's and is not freed here.
    BufferAllocator *allocator = nullptr;

private:
    BufferAllocator *block_allocator = nullptr; ///< Where the block came from; null for the heap.

    void Adopt(const GenericBuffer &other);
};

} // namespace Tavro::MovParserLib
