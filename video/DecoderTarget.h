// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a decoder's thread draws into: its OpenGL context, the frame that is written, and the
// texture that the picture ends in.

#include "video/VideoFormat.h"

#include <QSize>
#include <qopengl.h>

#include <array>
#include <memory>

class QOffscreenSurface;
class QOpenGLContext;
class QOpenGLFramebufferObject;
class VideoFrameBuffers;
class YuvConverter;

/// Everything but deleteContext() runs on the decoder's thread.
class DecoderTarget
{
public:
    DecoderTarget();
    /// drop() and deleteContext() come first.
    ~DecoderTarget();
    DecoderTarget(const DecoderTarget &) = delete;
    DecoderTarget &operator=(const DecoderTarget &) = delete;

    /// Makes a context current that belongs to the calling thread and shares with `root`. The one
    /// of an earlier thread, which has ended, is deleted.
    bool makeCurrent(QOpenGLContext *root, QOffscreenSurface *surface);
    /// Whether makeCurrent(root, surface) would take the context that is there.
    bool belongsToCurrentThread() const;
    /// Makes the context current that the calling thread made current before.
    void makeCurrent();
    bool hasExtension(const char *name) const;

    /// Lays out the frame; false when the driver has no room for it. `studioRange` and `tessarel`
    /// as in the converter. Nothing is made before the first map(): libvlc tries formats that it
    /// then cannot deliver, one after the other.
    bool setUp(VideoFormat format, const QSize &size, bool studioRange, bool tessarel);

    const VideoFrameBuffers *frame() const { return m_frame.get(); }

    /// Where the next picture is to be written, `still` as in the frame.
    std::array<void *, 3> map(bool still = false);
    /// Moves the written picture into the frame's texture; false when that holds it already.
    bool commit();
    /// The texture that shows the committed picture, red and blue exchanged; 0 when the driver has
    /// refused what that takes.
    GLuint draw();
    /// Hands what was asked so far to the card, so that other contexts see it.
    void flush();

    /// Copies what draw() showed last into a texture that outlives drop(): until the next picture
    /// nobody has to do without. Returns it; 0 where nothing was shown.
    GLuint keepPicture();

    /// Whether there is anything to keep.
    bool hasPicture() const { return m_shown != 0; }

    /// Counts a picture that was shown instead of the kept one, which goes after some.
    void ageKept();

    /// That texture; 0: none.
    GLuint kept() const { return m_kept; }

    void dropKept();

    /// Deletes the frame, the converter and the framebuffer and leaves no context current, so that
    /// the thread may end.
    void drop();

    /// Only after the decoder's thread has ended.
    void deleteContext();

private:
    void makeConverter();

    QOffscreenSurface *m_surface = nullptr; // the session's
    std::unique_ptr<QOpenGLContext> m_context;
    std::unique_ptr<QOpenGLFramebufferObject> m_framebuffer;
    std::unique_ptr<VideoFrameBuffers> m_frame;
    std::unique_ptr<YuvConverter> m_converter; // null for four-byte pixels
    GLuint m_shown = 0; // of the frame or the framebuffer
    GLuint m_kept = 0;
    int m_keptAge = 0; // in pictures
    QSize m_size;
    bool m_studioRange = false;
    bool m_tessarel = false;
};
