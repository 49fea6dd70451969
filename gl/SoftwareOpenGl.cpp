// SPDX-License-Identifier: GPL-3.0-or-later
#include "gl/SoftwareOpenGl.h"

#include <QByteArray>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <atomic>
#include <cstring>
#include <mutex>

namespace {

std::atomic_bool inUse{false};

bool findOut(QOpenGLContext *context)
{
    const QByteArray said = qgetenv("TAVRO_OPENGL");
    if (!said.isEmpty())
        return said == "software";
    const auto *renderer =
        reinterpret_cast<const char *>(context->functions()->glGetString(GL_RENDERER));
    return renderer && SoftwareOpenGl::isSoftware(renderer);
}

} // namespace

void SoftwareOpenGl::detect()
{
    static std::once_flag once;
    if (QOpenGLContext *context = QOpenGLContext::currentContext())
        std::call_once(once, [context] { inUse = findOut(context); });
}

bool SoftwareOpenGl::isInUse()
{
    return inUse;
}

bool SoftwareOpenGl::isSoftware(const char *renderer)
{
    // Mesa's drivers of today and of before, also behind a translator of APIs, and that of
    // browsers. A virtual machine's whose host draws by its processor calls itself LLVMPIPE in
    // brackets, but does not draw itself.
    for (const char *name :
         {"llvmpipe", "softpipe", "swrast", "Software Rasterizer", "SwiftShader"}) {
        if (std::strstr(renderer, name))
            return true;
    }
    return std::strncmp(renderer, "SWR ", 4) == 0;
}
