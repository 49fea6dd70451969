// SPDX-License-Identifier: GPL-3.0-or-later
// The half that runs on other threads: the scene graph's, where the contexts begin to share, and
// libvlc's, on which pictures and events arrive. Nothing here waits for the main thread but
// waitForSurface(), which ends when the main thread is about to wait for libvlc.
#include "video/Texture.h"
#include "video/VideoFrameBuffers.h"
#include "video/VlcSession.h"
#include "video/VxVlcPlayerQml.h"

#include <QDateTime>
#include <QLoggingCategory>
#include <QOpenGLContext>

#include <vlc/vlc.h>

#include <cstring>

Q_LOGGING_CATEGORY(lcVideo, "tavro.video", QtWarningMsg)
Q_DECLARE_LOGGING_CATEGORY(lcTiming)

namespace {

// A codec whose pictures are in studio range although their chroma does not say so.
constexpr quint32 kStudioRangeCodec = static_cast<quint32>(fourcc("VLFD"));

VlcSession *sessionOf(void *opaque)
{
    return static_cast<VlcSession *>(opaque);
}

} // namespace

// On the rendering thread, the main thread waiting. At the first visit, whether or not a film is
// there: one that is opened in a hidden window later has no visit.
QSGNode *VxVlcPlayerQml::updatePaintNode(QSGNode *node, UpdatePaintNodeData *data)
{
    if (makeRoot()) {
        m_transfer = Texture(false).transfer();
        QMetaObject::invokeMethod(this, &VxVlcPlayerQml::initFakeSurfaces, Qt::QueuedConnection);
        Q_EMIT textureTransferChanged();
    }
    return QQuickPaintedItem::updatePaintNode(node, data);
}

bool VxVlcPlayerQml::makeRoot()
{
    QOpenGLContext *current = QOpenGLContext::currentContext();
    if (m_root || !current)
        return false;
    auto root = std::make_shared<QOpenGLContext>();
    root->setFormat(current->format());
    root->setShareContext(current);
    if (!root->create())
        return false;
    m_root = std::move(root);
    return true;
}

unsigned VxVlcPlayerQml::onFormat(void **opaque, char *chroma, unsigned *width, unsigned *height,
                                  unsigned *pitches, unsigned *lines)
{
    VlcSession *session = sessionOf(*opaque);
    if (!session->waitForSurface())
        return 0;
    const VlcSession::ItemLock item(session);
    return item ? item->format(session, chroma, width, height, pitches, lines) : 0;
}

void VxVlcPlayerQml::onCleanup(void *opaque)
{
    VlcSession *session = sessionOf(opaque);
    DecoderTarget &target = session->target();
    target.makeCurrent();
    // Where the medium goes on, with another format or from its beginning, its last picture stays;
    // formats that libvlc only tries show none.
    const bool isStopping = session->isStopping();
    const bool wasShown = target.hasPicture();
    const GLuint kept = isStopping ? 0 : target.keepPicture();
    if (const VlcSession::ItemLock item(session); item && (isStopping || wasShown))
        item->forgetPicture(kept);
    if (isStopping)
        target.dropKept();
    target.drop();
}

void *VxVlcPlayerQml::onLock(void *opaque, void **planes)
{
    VlcSession *session = sessionOf(opaque);
    DecoderTarget &target = session->target();
    target.makeCurrent();
    const std::array<void *, 3> memory = target.map(session->isStill());
    for (int plane = 0; plane < target.frame()->layout().planeCount(); ++plane)
        planes[plane] = memory[plane];
    return nullptr;
}

// The picture is taken at its display.
void VxVlcPlayerQml::onUnlock(void *, void *, void *const *) { }

void VxVlcPlayerQml::onDisplay(void *opaque, void *)
{
    VlcSession *session = sessionOf(opaque);
    // The picture that stop() has taken away must not come back.
    if (session->isStopping())
        return;
    bool taken = true;
    if (const VlcSession::ItemLock item(session); item)
        taken = item->display(session->target());
    if (!taken)
        session->rest();
}

void VxVlcPlayerQml::onEvent(const libvlc_event_t *event, void *opaque)
{
    if (const VlcSession::ItemLock item(sessionOf(opaque)); item)
        item->handleEvent(event);
}

// Passes everything on to the main thread, also what is reported there: libvlc holds a lock around
// this call, and a receiver may well open the next medium.
void VxVlcPlayerQml::handleEvent(const libvlc_event_t *event)
{
    const int generation = m_generation;
    const auto post = [this](auto report) {
        QMetaObject::invokeMethod(this, report, Qt::QueuedConnection);
    };
    const auto errorText = [] {
        const char *text = libvlc_errmsg();
        return text ? QString::fromUtf8(text) : QStringLiteral("Unknown Error");
    };
    switch (event->type) {
    case libvlc_MediaPlayerTimeChanged: {
        const qint64 time = event->u.media_player_time_changed.new_time;
        post([=] { handleTime(generation, time); });
        break;
    }
    case libvlc_MediaPlayerAudioVolume:
        post([=] { handleVolume(generation); });
        break;
    case libvlc_MediaPlayerEncounteredError:
        post([=, error = errorText()] { handleError(generation, error); });
        break;
    case libvlc_MediaStateChanged: {
        const int state = event->u.media_state_changed.new_state;
        post([=, error = errorText()] { handleState(generation, state, error); });
        break;
    }
    case libvlc_MediaParsedChanged: {
        // The medium is parsed by now; asking for it here would wait for this very thread.
        auto *media = static_cast<libvlc_media_t *>(event->p_obj);
        const qint64 duration = libvlc_media_get_duration(media);
        const VideoTrack track = readTracks(media);
        {
            const std::lock_guard locker(m_mutex);
            m_videoTrack = track;
        }
        post([=] { handleDuration(generation, duration); });
        break;
    }
    default: // the stop is reported by the medium's state
        break;
    }
}

VxVlcPlayerQml::VideoTrack VxVlcPlayerQml::readTracks(libvlc_media_t *media)
{
    VideoTrack video;
    libvlc_media_track_t **tracks = nullptr;
    const unsigned count = libvlc_media_tracks_get(media, &tracks);
    for (unsigned i = 0; i < count; ++i) {
        if (tracks[i]->i_type != libvlc_track_video)
            continue;
        video.codec = tracks[i]->i_codec;
        video.size = QSize(static_cast<int>(tracks[i]->video->i_width),
                           static_cast<int>(tracks[i]->video->i_height));
    }
    if (tracks)
        libvlc_media_tracks_release(tracks, count);
    return video;
}

// The size that the file tells; libvlc's own, which may be padded, only where the file tells none.
VxVlcPlayerQml::VideoTrack VxVlcPlayerQml::trackForFormat(unsigned width, unsigned height)
{
    libvlc_media_t *media = nullptr;
    {
        const std::lock_guard locker(m_mutex);
        if (!m_videoTrack.size.isEmpty() || !m_media)
            return m_videoTrack;
        media = m_media;
        libvlc_media_retain(media);
    }
    VideoTrack track = readTracks(media);
    libvlc_media_release(media);
    if (track.size.isEmpty())
        track.size = QSize(static_cast<int>(width), static_cast<int>(height));
    const std::lock_guard locker(m_mutex);
    m_videoTrack = track;
    return track;
}

unsigned VxVlcPlayerQml::format(VlcSession *session, char *chroma, unsigned *width,
                                unsigned *height, unsigned *pitches, unsigned *lines)
{
    VideoFormat code = videoFormatFromChroma(chroma);
    const VideoTrack track = trackForFormat(*width, *height);
    // J420 counts as such too, although its signal uses all levels.
    const bool studioRange = code == VideoFormat::J420 || track.codec == kStudioRangeCodec;
    *width = static_cast<unsigned>(track.size.width());
    *height = static_cast<unsigned>(track.size.height());

    DecoderTarget &target = session->target();
    if (!session->makeTargetCurrent())
        return 0;
    if (m_nativeSize)
        QMetaObject::invokeMethod(this, &VxVlcPlayerQml::resizeToFrame, Qt::QueuedConnection);
    const auto tell = [this, generation = m_generation.load(), size = track.size] {
        if (generation == m_generation)
            Q_EMIT frameSizeTold(size);
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);

    // A mapped texture holds four-byte pixels only.
    const bool convert = m_shaderColorConversion && !target.hasExtension("GL_INTEL_map_texture");
    if (!convert || code == VideoFormat::None) {
        code = VideoFormat::BGRA;
        std::memcpy(chroma, "BGRA", 4);
    }
    const bool tessarel = isYuv(code)
        && fileMetadata()
               .value(QStringLiteral("Writing Tool"))
               .toString()
               .contains(QLatin1String("Tessarel"));
    if (!target.setUp(code, track.size, studioRange, tessarel)) {
        target.drop();
        return 0;
    }
    const FrameLayout &layout = target.frame()->layout();
    for (int plane = 0; plane < 3; ++plane) {
        pitches[plane] = layout.pitches[plane];
        lines[plane] = layout.lines[plane];
    }
    m_format = code;
    m_transfer = target.frame()->transfer();
    qCInfo(lcVideo).noquote() << "pictures of" << track.size << "as" << texturePixelFormat() << "by"
                              << textureTransfer();
    Q_EMIT texturePixelFormatChanged();
    Q_EMIT textureTransferChanged();
    return 1;
}

// On the decoder's thread, before the texture is deleted, with another one that stands in for it or
// 0; on the main thread for a decoder that has been left to itself.
void VxVlcPlayerQml::forgetPicture(unsigned kept)
{
    setTextureId(static_cast<int>(kept));
    m_fpsCounter = 0;
    if (m_fps.exchange(0) != 0)
        Q_EMIT fpsChanged();
}

// False when the picture is one that nobody needs; the next one may then take its time.
bool VxVlcPlayerQml::display(DecoderTarget &target)
{
    ++m_displays;
    // Another one has taken its place; renderers hear of that some time later.
    if (target.kept() != 0 && m_textureId != static_cast<int>(target.kept()))
        target.ageKept();
    // A skipped picture, and that of a hidden window, stays in the frame's memory, for the next one
    // to be written over.
    if (m_seen && (m_displays > kSkippedDisplays || m_hasFewPictures)) {
        target.makeCurrent();
        if (!target.commit())
            return false;
        updateTexture(target);
        target.flush();
        Q_EMIT frameDisplayed();
    }
    computeFps();
    return m_seen || m_displays <= kSkippedDisplays;
}

// On the decoder's thread, its context current.
void VxVlcPlayerQml::updateTexture(DecoderTarget &target)
{
    const GLuint texture = target.draw();
    if (m_textureId == 0)
        qCDebug(lcTiming) << "video: first picture";
    setTextureId(static_cast<int>(texture));
}

// On the decoder's thread.
void VxVlcPlayerQml::computeFps()
{
    const qint64 second = QDateTime::currentMSecsSinceEpoch() / 1000;
    if (second <= m_fpsSecond) {
        ++m_fpsCounter;
        return;
    }
    m_fps = m_fpsCounter + 1;
    m_fpsSecond = second;
    m_fpsCounter = 0;
    qCDebug(lcVideo) << m_fps << "pictures a second";
    Q_EMIT fpsChanged();
}
