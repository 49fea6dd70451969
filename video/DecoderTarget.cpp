// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/DecoderTarget.h"

#include "video/VideoFrameBuffers.h"
#include "video/YuvConverter.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QThread>

namespace {

constexpr int kNoConverter = 0;

int converterFourcc(VideoFormat format)
{
    switch (format) {
    case VideoFormat::YUYV:
        return fourcc("YUYV");
    case VideoFormat::UYVY:
        return fourcc("UYVY");
    case VideoFormat::I420:
    case VideoFormat::J420:
        return fourcc("I420");
    case VideoFormat::YV12:
        return fourcc("YV12");
    case VideoFormat::NV12:
        return fourcc("NV12");
    case VideoFormat::None:
    case VideoFormat::BGRA:
    case VideoFormat::RV32:
        break;
    }
    return kNoConverter;
}

} // namespace

DecoderTarget::DecoderTarget() = default;
DecoderTarget::~DecoderTarget() = default;

bool DecoderTarget::belongsToCurrentThread() const
{
    return m_context && m_context->thread() == QThread::currentThread();
}

bool DecoderTarget::makeCurrent(QOpenGLContext *root, QOffscreenSurface *surface)
{
    if (!belongsToCurrentThread()) {
        m_context = std::make_unique<QOpenGLContext>();
        m_context->setShareContext(root);
        m_context->setFormat(surface->format());
        if (!m_context->create()) {
            m_context.reset();
            return false;
        }
    }
    m_surface = surface;
    return m_context->makeCurrent(m_surface);
}

void DecoderTarget::makeCurrent()
{
    m_context->makeCurrent(m_surface);
}

bool DecoderTarget::hasExtension(const char *name) const
{
    return m_context->hasExtension(name);
}

bool DecoderTarget::setUp(VideoFormat format, const QSize &size, bool studioRange, bool tessarel)
{
    m_shown = 0;
    m_converter.reset();
    m_framebuffer.reset();
    m_size = size;
    m_studioRange = studioRange;
    m_tessarel = tessarel;
    m_frame = std::make_unique<VideoFrameBuffers>();
    return m_frame->setUp(format, FrameLayout::paddedWidth(format, size.width()), size.height());
}

void DecoderTarget::makeConverter()
{
    const int source = converterFourcc(m_frame->layout().format);
    if (source == kNoConverter)
        return;
    m_framebuffer = std::make_unique<QOpenGLFramebufferObject>(
        m_size, QOpenGLFramebufferObject::CombinedDepthStencil, GL_TEXTURE_2D);
    m_converter = std::make_unique<YuvConverter>(source, fourcc("RGBA"), m_studioRange, m_tessarel);
}

std::array<void *, 3> DecoderTarget::map(bool still)
{
    // Before the frame's memory is mapped: with it, textures cannot be made.
    if (!m_converter)
        makeConverter();
    const std::array<void *, 3> planes = m_frame->map(still);
    flush();
    return planes;
}

bool DecoderTarget::commit()
{
    return m_frame->commit(true);
}

GLuint DecoderTarget::draw()
{
    m_shown = 0;
    if (!m_converter)
        return m_shown = m_frame->textureId();
    if (!m_converter->isValid() || m_frame->textureId() == 0 || !m_framebuffer->bind())
        return 0;
    m_converter->convert(m_frame->textureId(), m_framebuffer->width(), m_framebuffer->height());
    m_framebuffer->release();
    return m_shown = m_framebuffer->texture();
}

GLuint DecoderTarget::keepPicture()
{
    if (m_shown == 0)
        return 0;
    dropKept();
    QOpenGLFunctions *gl = m_context->functions();
    GLuint framebuffer = 0;
    m_keptAge = 0;
    gl->glGenFramebuffers(1, &framebuffer);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_shown, 0);
    if (gl->glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE) {
        gl->glGenTextures(1, &m_kept);
        gl->glBindTexture(GL_TEXTURE_2D, m_kept);
        gl->glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, m_size.width(), m_size.height(), 0);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
    }
    gl->glDeleteFramebuffers(1, &framebuffer);
    flush();
    return m_kept;
}

void DecoderTarget::ageKept()
{
    constexpr int kPictures = 25;
    if (++m_keptAge < kPictures)
        return;
    makeCurrent();
    dropKept();
}

void DecoderTarget::dropKept()
{
    if (m_kept != 0)
        m_context->functions()->glDeleteTextures(1, &m_kept);
    m_kept = 0;
}

void DecoderTarget::flush()
{
    m_context->functions()->glFlush();
}

void DecoderTarget::drop()
{
    if (!m_context)
        return;
    makeCurrent();
    m_shown = 0;
    m_converter.reset();
    m_frame.reset();
    m_framebuffer.reset();
    m_context->doneCurrent();
}

void DecoderTarget::deleteContext()
{
    m_context.reset();
}
