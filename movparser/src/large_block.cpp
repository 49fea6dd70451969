// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/large_block.h"

#include <sys/mman.h>

namespace Tavro::MovParserLib {

namespace {

constexpr uintptr_t kPage = 4096;
constexpr uint64_t kLargePage = uint64_t{2} << 20;
// Below this size the memory comes from what the process has touched before.
constexpr uint64_t kFreshMemory = uint64_t{64} << 10;

} // namespace

void PrepareLargeBlock(void *block, uint64_t size)
{
    if (size < kFreshMemory)
        return;
    const auto begin = (reinterpret_cast<uintptr_t>(block) + kPage - 1) & ~(kPage - 1);
    const auto end = (reinterpret_cast<uintptr_t>(block) + size) & ~(kPage - 1);
    auto *pages = reinterpret_cast<void *>(begin);
    if (size >= kLargePage)
        static_cast<void>(madvise(pages, end - begin, MADV_HUGEPAGE));
#ifdef MADV_POPULATE_WRITE
    static_cast<void>(madvise(pages, end - begin, MADV_POPULATE_WRITE));
#endif
}

} // namespace Tavro::MovParserLib
