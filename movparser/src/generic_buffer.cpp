// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/generic_buffer.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

namespace Tavro::MovParserLib {

namespace {

void *SystemAlloc(unsigned long size, unsigned long alignment)
{
    if (alignment <= 1)
        return std::malloc(size);
    // posix_memalign wants a multiple of the size of a pointer.
    void *block = nullptr;
    if (posix_memalign(&block, std::max<unsigned long>(alignment, sizeof(void *)), size) != 0)
        return nullptr;
    return block;
}

} // namespace

GenericBuffer::GenericBuffer(BufferAllocator *allocator_)
    : allocator(allocator_)
{ }

GenericBuffer::~GenericBuffer()
{
    Free();
}

GenericBuffer::GenericBuffer(GenericBuffer &other)
{
    Adopt(other);
    other.external = true;
}

GenericBuffer &GenericBuffer::operator=(GenericBuffer &other)
{
    if (this == &other)
        return *this;
    Free();
    Adopt(other);
    other.external = true;
    return *this;
}

void GenericBuffer::TransferTo(GenericBuffer &target)
{
    if (this == &target)
        return;
    target.Free();
    target.Adopt(*this);
    Adopt(GenericBuffer());
}

GenericBuffer::Error GenericBuffer::Alloc(unsigned long size, unsigned long wanted_alignment,
                                          void *external_block)
{
    if (size == 0) {
        assert(buffer == __null && buffer_size == 0);
        return ERROR_OKAY;
    }
    if (buffer) {
        if (!external && size <= buffer_size && wanted_alignment <= alignment)
            return ERROR_OKAY;
        Free();
    }
    if (external_block) {
        buffer = external_block;
        external = true;
    } else if (allocator) {
        buffer = wanted_alignment != 0 ? allocator->AllocAligned(size, wanted_alignment)
                                       : allocator->Alloc(size);
    } else {
        buffer = SystemAlloc(size, wanted_alignment);
    }
    if (!buffer) {
        buffer_size = 0;
        alignment = 0;
        external = false;
        return ERROR_MEM_ALLOC;
    }
    buffer_size = size;
    alignment = wanted_alignment;
    block_allocator = external ? nullptr : allocator;
    return ERROR_OKAY;
}

GenericBuffer::Error GenericBuffer::SetAllocator(BufferAllocator *new_allocator)
{
    if (allocator)
        return ERROR_ALLOCATOR_EXISTS;
    allocator = new_allocator;
    return ERROR_OKAY;
}

void GenericBuffer::Free()
{
    if (buffer && !external) {
        if (!block_allocator)
            std::free(buffer);
        else if (alignment != 0)
            block_allocator->FreeAligned(buffer);
        else
            block_allocator->Free(buffer);
    }
    buffer = nullptr;
    block_allocator = nullptr;
    buffer_size = 0;
    alignment = 0;
    external = false;
}

void GenericBuffer::Adopt(const GenericBuffer &other)
{
    buffer = other.buffer;
    buffer_size = other.buffer_size;
    alignment = other.alignment;
    external = other.external;
    allocator = other.allocator;
    block_allocator = other.block_allocator;
}

} // namespace Tavro::MovParserLib
