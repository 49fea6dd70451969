// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/Texture.h"

#include "video/IntelMapTextureImp.h"
#include "video/PboTextureImp.h"
#include "video/PinnedMemoryTextureImp.h"
#include "video/SimpleTextureImp.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions_1_1>
#include <QOpenGLFunctions_2_1>
#include <QOpenGLFunctions_3_0>
#include <QOpenGLFunctions_3_2_Core>

Texture::Texture(bool asyncUpload)
{
    const QOpenGLContext *context = QOpenGLContext::currentContext();
    if (!context)
        return;
    auto *gl32 = context->versionFunctions<QOpenGLFunctions_3_2_Core>();
    auto *gl30 = context->versionFunctions<QOpenGLFunctions_3_0>();
    auto *gl21 = context->versionFunctions<QOpenGLFunctions_2_1>();
    auto *gl11 = context->versionFunctions<QOpenGLFunctions_1_1>();
    if (asyncUpload && gl32 && context->hasExtension("GL_AMD_pinned_memory")) {
        m_transfer = PinnedMemory;
        if (gl32->initializeOpenGLFunctions())
            m_imp = std::make_unique<PinnedMemoryTextureImp>(asyncUpload, gl32);
    } else if (gl30 && context->hasExtension("GL_INTEL_map_texture")) {
        m_transfer = IntelMap;
        if (gl30->initializeOpenGLFunctions())
            m_imp = std::make_unique<IntelMapTextureImp>(asyncUpload, gl30);
    } else if (gl21) {
        m_transfer = PixelBuffer;
        if (gl32 && !gl32->initializeOpenGLFunctions())
            gl32 = nullptr;
        if (gl21->initializeOpenGLFunctions())
            m_imp = std::make_unique<PboTextureImp>(asyncUpload, gl21, gl32);
    } else if (gl11) {
        m_transfer = Simple;
        if (gl11->initializeOpenGLFunctions())
            m_imp = std::make_unique<SimpleTextureImp>(asyncUpload, gl11);
    }
}

Texture::~Texture() = default;

bool Texture::create()
{
    return m_imp && m_imp->create();
}

void Texture::destroy()
{
    if (m_imp)
        m_imp->destroy();
}

bool Texture::allocate(GLenum target, GLint internalFormat, int width, int height, GLenum format,
                       GLenum type)
{
    return m_imp && m_imp->allocate(target, internalFormat, width, height, format, type);
}

void Texture::upload(bool waitRequested, GLenum target, GLint internalFormat, int width, int height,
                     GLenum format, GLenum type, const void *data)
{
    if (!m_imp)
        return;
    m_imp->setAsyncUpload(waitRequested);
    m_imp->upload(target, internalFormat, width, height, format, type, data);
}

bool Texture::isValid() const
{
    return m_imp && m_imp->isValid();
}

GLuint Texture::textureId() const
{
    return m_imp ? m_imp->textureId() : 0;
}

void *Texture::map(int *stride)
{
    return m_imp ? m_imp->map(stride) : nullptr;
}

void Texture::unmap()
{
    if (m_imp)
        m_imp->unmap();
}

void Texture::wait()
{
    if (m_imp)
        m_imp->wait();
}

QString Texture::transferName(int transfer)
{
    switch (transfer) {
    case Simple:
        return QStringLiteral("CPU");
    case PixelBuffer:
        return QStringLiteral("Pixel Buffer Object");
    case IntelMap:
        return QStringLiteral("Intel Map Texture");
    case PinnedMemory:
        return QStringLiteral("AMD Pinned Memory");
    default:
        return {};
    }
}
