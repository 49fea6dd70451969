// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/VlcInstance.h"

#include "settings/VxVlcOptions.h"

#include <QByteArray>
#include <QLoggingCategory>

#include <dlfcn.h>
#include <malloc.h>
#include <vlc/vlc.h>

#include <cstdarg>
#include <cstdio>
#include <future>
#include <vector>

Q_LOGGING_CATEGORY(lcVlc, "tavro.video", QtWarningMsg)

namespace {

// Each opening starts a dozen threads. Heaps of their own would each keep the peak of what pictures
// took, and so would the free end of a shared one.
void limitHeaps()
{
    mallopt(M_ARENA_MAX, 2);
    mallopt(M_MMAP_THRESHOLD, 4 << 20); // a picture, but no packet
    mallopt(M_TRIM_THRESHOLD, 128 << 10);
}

// On libvlc's threads.
void noteAlsaError(const char *, int, const char *function, int, const char *format, ...)
{
    if (!lcVlc().isDebugEnabled())
        return;
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    qCDebug(lcVlc) << "ALSA:" << function << text;
}

// Without a sound device libvlc asks for one with each block of sound, and ALSA answers each time
// with eight lines on the standard error. The library stays loaded, for what is set lies in it.
void quietenAlsa()
{
    using Handler = void (*)(const char *, int, const char *, int, const char *, ...);
    using SetHandler = int (*)(Handler);
    void *alsa = dlopen("libasound.so.2", RTLD_LAZY);
    void *set = alsa ? dlsym(alsa, "snd_lib_error_set_handler") : nullptr;
    if (set)
        reinterpret_cast<SetHandler>(set)(noteAlsaError);
}

std::vector<QByteArray> argumentTexts()
{
    const VxVlcOptions *options = VxVlcOptions::instance();
    std::vector<QByteArray> texts;
    for (const QString &argument :
         options ? options->instanceArguments() : VxVlcOptions().instanceArguments())
        texts.push_back(argument.toUtf8());
    return texts;
}

// On any thread.
libvlc_instance_t *makeInstance(const std::vector<QByteArray> &texts)
{
    limitHeaps();
    quietenAlsa();
    std::vector<const char *> arguments;
    for (const QByteArray &text : texts)
        arguments.push_back(text.constData());
    libvlc_instance_t *instance = libvlc_new(static_cast<int>(arguments.size()), arguments.data());
    if (!instance)
        qCWarning(lcVlc) << "libvlc refuses its arguments";
    return instance;
}

std::future<libvlc_instance_t *> &begunInstance()
{
    static std::future<libvlc_instance_t *> begun;
    return begun;
}

} // namespace

void beginVlcInstance()
{
    begunInstance() = std::async(std::launch::async, makeInstance, argumentTexts());
}

libvlc_instance_t *vlcInstance()
{
    static libvlc_instance_t *instance = nullptr;
    if (!instance)
        instance = begunInstance().valid() ? begunInstance().get() : makeInstance(argumentTexts());
    return instance;
}

void returnFreeMemory()
{
    malloc_trim(0);
}
