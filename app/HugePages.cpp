// SPDX-License-Identifier: GPL-3.0-or-later
// Large pages for large textures where the processor draws. The driver takes the memory of a
// texture from posix_memalign(), and the kernel clears it page by page as the picture is copied in,
// which is most of the time of an upload; a panorama that is seen whole then misses the translation
// of addresses at every other texel. As the program's own symbol, this function comes before the C
// library's. Decoders ask here too, for pictures that live as long as a film: these keep small
// pages, which a machine that has just given its memory back fills far sooner.

#include "gl/SoftwareOpenGl.h"

#include <dlfcn.h>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uintptr_t kHugePage = 2U << 20U;
constexpr std::size_t kMapped = 8U << 20U; // from here on each block has pages of its own

/// Whether the code at \a address is Mesa's. Without a lock: another library may just be loading.
bool isDriver(void *address)
{
    dl_find_object object{};
    if (_dl_find_object(address, &object) != 0)
        return false;
    const char *name = object.dlfo_link_map->l_name;
    return std::strstr(name, "_dri.so") || std::strstr(name, "libgallium");
}

} // namespace

extern "C" int posix_memalign(void **memory, std::size_t alignment, std::size_t size) noexcept
{
    if (alignment % sizeof(void *) != 0 || (alignment & (alignment - 1)) != 0 || alignment == 0)
        return EINVAL;
    const int error = errno; // stays as it is, whatever happens
    void *block = memalign(alignment, size);
    // Smaller blocks come from a heap that keeps its pages, and what was asked for them, for
    // others.
    if (block && size >= kMapped && SoftwareOpenGl::isInUse()
        && isDriver(__builtin_return_address(0))) {
        const auto begin = (reinterpret_cast<std::uintptr_t>(block) + kHugePage - 1) / kHugePage;
        const auto end = (reinterpret_cast<std::uintptr_t>(block) + size) / kHugePage;
        // A kernel without large pages says no, and all is as before.
        madvise(reinterpret_cast<void *>(begin * kHugePage), (end - begin) * kHugePage,
                MADV_HUGEPAGE);
    }
    errno = error;
    if (!block)
        return ENOMEM;
    *memory = block;
    return 0;
}
