// SPDX-License-Identifier: GPL-3.0-or-later
// Loaded into the player before the C library: a file whose name says so lies on a disk that takes
// the request to open it, or to write it, and never answers. The
// graphics driver never gives a context back once the file that DRIVER_HANGS names is there.
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int answer(const char *function, const char *path, int flags, mode_t mode)
{
    while (strstr(path, "dead disk")
           || ((flags & O_ACCMODE) != O_RDONLY && strstr(path, "no room")))
        pause();
    int (*next)(const char *, int, ...) =
        (int (*)(const char *, int, ...))dlsym(RTLD_NEXT, function);
    return next(path, flags, mode);
}

#define ANSWER(name)                                                                               \
    int name(const char *path, int flags, ...)                                                     \
    {                                                                                              \
        va_list rest;                                                                              \
        va_start(rest, flags);                                                                     \
        const mode_t mode = flags & O_CREAT ? va_arg(rest, mode_t) : 0;                            \
        va_end(rest);                                                                              \
        return answer(#name, path, flags, mode);                                                   \
    }

ANSWER(open)
ANSWER(open64)

void glXDestroyContext(void *display, void *context)
{
    const char *file = getenv("DRIVER_HANGS");
    while (file && access(file, F_OK) == 0)
        pause();
    void (*next)(void *, void *) =
        (void (*)(void *, void *))dlsym(RTLD_NEXT, "glXDestroyContext");
    next(display, context);
}
