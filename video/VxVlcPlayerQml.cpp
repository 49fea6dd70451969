// SPDX-License-Identifier: GPL-3.0-or-later
// The main thread's half: properties, commands and libvlc's objects. What libvlc reports is in a
// file of its own.
#include "video/VxVlcPlayerQml.h"

#include "gl/SoftwareOpenGl.h"
#include "settings/VxVlcOptions.h"
#include "video/BoundedWait.h"
#include "video/Texture.h"
#include "video/VlcInstance.h"
#include "video/VlcSession.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QQuickWindow>
#include <QThreadPool>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vlc/vlc.h>

#include <thread>

Q_LOGGING_CATEGORY(lcTiming, "tavro.timing", QtWarningMsg)

namespace {

constexpr libvlc_event_type_t kMediaEvents[] = {libvlc_MediaStateChanged,
                                                libvlc_MediaParsedChanged};
constexpr libvlc_event_type_t kPlayerEvents[] = {
    libvlc_MediaPlayerTimeChanged, libvlc_MediaPlayerEncounteredError, libvlc_MediaPlayerStopped,
    libvlc_MediaPlayerAudioVolume};

// Longer than from one medium of a list to the next.
constexpr int kRestMs = 1000;

// libvlc ends a medium within 40 ms as a rule, 140 ms at 4K. Most times the next one thus has the
// same player; to wait much longer would be felt.
constexpr std::chrono::milliseconds kEndPatience(200);

constexpr int kRoomMs = 10;

constexpr int kNiceness = 5; // added to that of the process

} // namespace

VxVlcPlayerQml::VxVlcPlayerQml(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    // The base class keeps a picture of this size; the item's own may be that of an 8K frame.
    setTextureSize(QSize(1, 1));
    watchWindow(window());
    m_beginning.setSingleShot(true);
    m_beginning.setInterval(kRoomMs);
    connect(&m_beginning, &QTimer::timeout, this, &VxVlcPlayerQml::playWhenThereIsRoom);
    m_rest.setSingleShot(true);
    m_rest.setInterval(kRestMs);
    connect(&m_rest, &QTimer::timeout, this,
            [] { QThreadPool::globalInstance()->start(returnFreeMemory); });
}

VxVlcPlayerQml::~VxVlcPlayerQml()
{
    // The base class leaves the window when there is no player any more.
    disconnect(m_visibility);
    desinitVlcMediaInstance();
    desinitVlcPlayerInstance();
}

libvlc_media_player_t *VxVlcPlayerQml::player() const
{
    return m_session ? m_session->player() : nullptr;
}

float VxVlcPlayerQml::volume() const
{
    const bool asked = player() && !m_volumePending;
    const int percent = asked ? libvlc_audio_get_volume(player()) : m_volumePercent;
    return static_cast<float>(percent) / 100.0f;
}

void VxVlcPlayerQml::setVolume(float volume)
{
    m_volumePercent = static_cast<int>(volume * 100);
    if (player())
        libvlc_audio_set_volume(player(), m_volumePercent);
    Q_EMIT volumeChanged();
}

void VxVlcPlayerQml::setNativeSize(bool nativeSize)
{
    if (m_nativeSize.exchange(nativeSize) != nativeSize)
        Q_EMIT nativeSizeChanged();
}

void VxVlcPlayerQml::setYaw(float yaw)
{
    if (qFuzzyCompare(m_yaw, yaw))
        return;
    m_yaw = yaw;
    Q_EMIT yawChanged();
}

void VxVlcPlayerQml::setPitch(float pitch)
{
    if (qFuzzyCompare(m_pitch, pitch))
        return;
    m_pitch = pitch;
    Q_EMIT pitchChanged();
}

void VxVlcPlayerQml::setRoll(float roll)
{
    if (qFuzzyCompare(m_roll, roll))
        return;
    m_roll = roll;
    Q_EMIT rollChanged();
}

void VxVlcPlayerQml::setTextureId(int textureId)
{
    if (m_textureId.exchange(textureId) != textureId)
        Q_EMIT textureIdChanged();
}

void VxVlcPlayerQml::setSeenElsewhere(bool seenElsewhere)
{
    if (m_seenElsewhere == seenElsewhere)
        return;
    m_seenElsewhere = seenElsewhere;
    findViewers();
    Q_EMIT seenElsewhereChanged();
}

void VxVlcPlayerQml::setPaintTexture(bool paintTexture)
{
    if (m_paintTexture == paintTexture)
        return;
    m_paintTexture = paintTexture;
    Q_EMIT paintTextureChanged();
}

QString VxVlcPlayerQml::textureTransfer() const
{
    return Texture::transferName(m_transfer);
}

QString VxVlcPlayerQml::texturePixelFormat() const
{
    return videoFormatName(m_format);
}

QVariantMap VxVlcPlayerQml::fileMetadata() const
{
    const std::lock_guard locker(m_mutex);
    return m_fileMetadata;
}

void VxVlcPlayerQml::setFileMetadata(const QVariantMap &fileMetadata)
{
    {
        const std::lock_guard locker(m_mutex);
        if (m_fileMetadata == fileMetadata)
            return;
        m_fileMetadata = fileMetadata;
    }
    Q_EMIT fileMetadataChanged();
}

void VxVlcPlayerQml::openFile(const QUrl &url)
{
    if (url.isEmpty())
        return;
    m_source = url;
    m_hasFewPictures = false;
    open(false);
}

// With \a again the medium that has just ended begins anew.
void VxVlcPlayerQml::open(bool again)
{
    qCDebug(lcTiming) << "video: opening" << m_source;
    // The old medium's output stays until the new one has a picture, and goes on showing its last
    // one: wanted where it is the same medium, and elsewhere passed off as the new medium's.
    if (!again)
        stop();
    else if (m_session)
        m_session->endRest();
    desinitVlcMediaInstance();
    initVlcPlayerInstance();
    initVlcMediaInstance();
    if (player() && m_media) {
        libvlc_media_player_set_media(player(), m_media);
        startPlaying();
    } else {
        const int generation = ++m_generation;
        // As at each opening: the failure must be told once more.
        m_errorTold = false;
        m_state = Opening;
        Q_EMIT vlcStateChanged(m_state);
        QMetaObject::invokeMethod(
            this,
            [this, generation] {
                handleError(generation, tr("libvlc cannot be started with these arguments."));
                handleState(generation, Error, {});
            },
            Qt::QueuedConnection);
    }
    Q_EMIT volumeChanged();
    Q_EMIT sourceChanged();
}

// What libvlc reports from here on belongs to a new run of the medium.
void VxVlcPlayerQml::startPlaying()
{
    ++m_generation;
    m_state = Idle;
    m_errorTold = false;
    m_durationTold = 0;
    m_displays = 0;
    m_pausePending = false;
    m_seekPending = -1;
    m_volumePending = m_volumePercent >= 0;
    m_rest.stop();
    playWhenThereIsRoom();
}

void VxVlcPlayerQml::playWhenThereIsRoom()
{
    if (VlcSession::isMemoryHeld()) {
        m_beginning.start();
        return;
    }
    m_session->setStill(false);
    // Where the processor draws, decoding ahead must not hold up the drawing of what is decoded:
    // all threads of the medium, the sound's too, inherit this from the one that starts it. The
    // wait is as short as the call, which starts a thread; what follows needs the run that it
    // begins.
    std::thread([this] {
        const auto thread = id_t(syscall(SYS_gettid));
        if (SoftwareOpenGl::isInUse())
            setpriority(PRIO_PROCESS, thread, getpriority(PRIO_PROCESS, thread) + kNiceness);
        libvlc_media_player_play(player());
    }).join();
    if (m_seekPending >= 0)
        libvlc_media_player_set_time(player(), m_seekPending);
    // libvlc forgets the delay with each medium.
    const VxVlcOptions *options = VxVlcOptions::instance();
    if (options && options->audioDelay != 0)
        updateAudioDelay();
}

void VxVlcPlayerQml::pause()
{
    if (!player())
        return;
    m_session->endRest();
    // libvlc pauses nothing that does not play yet.
    const libvlc_state_t state = libvlc_media_player_get_state(player());
    m_pausePending = m_beginning.isActive() || state == libvlc_Opening;
    libvlc_media_player_set_pause(player(), 1);
}

void VxVlcPlayerQml::play()
{
    m_pausePending = false;
    if (!player() || !m_media) {
        restart();
        return;
    }
    m_session->endRest();
    switch (libvlc_media_player_get_state(player())) {
    case libvlc_Ended:
    case libvlc_Error:
        // libvlc ignores the command where a run has ended.
        restart();
        break;
    case libvlc_NothingSpecial:
    case libvlc_Stopped:
        if (!m_beginning.isActive())
            startPlaying();
        break;
    default:
        libvlc_media_player_play(player());
        break;
    }
}

void VxVlcPlayerQml::restart(bool afresh)
{
    if (!m_source.isEmpty())
        open(m_state == Ended && !afresh);
}

void VxVlcPlayerQml::stop()
{
    // Before the texture is deleted: a renderer that takes its picture while the main thread waits
    // for libvlc must not find the old name.
    setTextureId(0);
    if (!m_session)
        return;
    m_beginning.stop();
    // An end that is still on its way must not start the next medium.
    const int generation = ++m_generation;
    if (!endMedium()) {
        desinitVlcMediaInstance();
        m_session.reset();
        // What the old player would have done and told.
        forgetPicture();
        QMetaObject::invokeMethod(
            this, [this, generation] { handleState(generation, Stopped, {}); },
            Qt::QueuedConnection);
    }
    // A change of the format that was under way may have brought a picture back.
    setTextureId(0);
    m_rest.start();
}

// False when the player does not stop soon. It then ends by itself, unseen and unheard.
bool VxVlcPlayerQml::endMedium()
{
    if (runWithin(kEndPatience, [session = m_session] { session->stop(); }))
        return true;
    qCDebug(lcTiming) << "video: left a player that does not stop";
    m_session->abandon();
    return false;
}

void VxVlcPlayerQml::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemSceneChange)
        watchWindow(value.window);
    QQuickPaintedItem::itemChange(change, value);
}

void VxVlcPlayerQml::watchWindow(QQuickWindow *itemWindow)
{
    disconnect(m_visibility);
    if (itemWindow)
        m_visibility =
            connect(itemWindow, &QWindow::visibilityChanged, this, &VxVlcPlayerQml::findViewers);
    findViewers();
}

void VxVlcPlayerQml::findViewers()
{
    const bool onScreen = window() && window()->visibility() != QWindow::Hidden
        && window()->visibility() != QWindow::Minimized;
    m_seen = onScreen || m_seenElsewhere;
    // The picture of a paused film that they have not seen yet.
    if (m_seen && m_session)
        m_session->endRest();
}

void VxVlcPlayerQml::seek(int offset)
{
    if (m_beginning.isActive()) {
        m_seekPending = offset;
    } else if (player()) {
        m_session->endRest();
        libvlc_media_player_set_time(player(), offset);
    }
    // Only a medium that plays reports its time.
    if (!player() || !libvlc_media_player_is_playing(player()))
        Q_EMIT positionChanged(offset);
}

void VxVlcPlayerQml::updateAudioDelay()
{
    const VxVlcOptions *options = VxVlcOptions::instance();
    if (player() && options)
        libvlc_audio_set_delay(player(), qint64{options->audioDelay} * 1000);
}

void VxVlcPlayerQml::initVlcPlayerInstance()
{
    if (player())
        return;
    libvlc_instance_t *instance = vlcInstance();
    if (!instance)
        return;
    auto session = std::make_shared<VlcSession>(this, instance);
    if (!session->player())
        return;
    m_session = std::move(session);
    initFakeSurfaces();
    if (m_volumePercent >= 0)
        libvlc_audio_set_volume(player(), m_volumePercent);
    libvlc_event_manager_t *events = libvlc_media_player_event_manager(player());
    for (const libvlc_event_type_t type : kPlayerEvents)
        libvlc_event_attach(events, type, onEvent, m_session.get());
    libvlc_video_set_callbacks(player(), onLock, onUnlock, onDisplay, m_session.get());
    libvlc_video_set_format_callbacks(player(), onFormat, onCleanup);
}

void VxVlcPlayerQml::desinitVlcPlayerInstance()
{
    if (!m_session)
        return;
    setTextureId(0);
    m_session->leaveItem();
    endMedium();
    m_session.reset();
}

void VxVlcPlayerQml::initVlcMediaInstance()
{
    const VxVlcOptions *options = VxVlcOptions::instance();
    m_shaderColorConversion = options && options->shaderColorConversion;
    libvlc_media_t *media = m_session
        ? libvlc_media_new_location(vlcInstance(),
                                    m_source.toString(QUrl::FullyEncoded).toUtf8().constData())
        : nullptr;
    if (!media)
        return;
    libvlc_event_manager_t *events = libvlc_media_event_manager(media);
    for (const libvlc_event_type_t type : kMediaEvents)
        libvlc_event_attach(events, type, onEvent, m_session.get());
    for (const QString &option : options ? options->mediaOptions() : VxVlcOptions().mediaOptions())
        libvlc_media_add_option(media, option.toUtf8().constData());
    // libvlc's own reader of MP4 and MOV lets a film end while its decoder still holds the only
    // picture; FFmpeg's does not.
    if (m_hasFewPictures)
        libvlc_media_add_option(media, ":demux=avformat");
    const std::lock_guard locker(m_mutex);
    m_media = media;
    m_videoTrack = VideoTrack();
}

// The events go first: the manager dies with the last reference to the medium.
void VxVlcPlayerQml::desinitVlcMediaInstance()
{
    if (!m_media)
        return;
    libvlc_media_t *media = m_media;
    libvlc_event_manager_t *events = libvlc_media_event_manager(media);
    for (const libvlc_event_type_t type : kMediaEvents)
        libvlc_event_detach(events, type, onEvent, m_session.get());
    {
        const std::lock_guard locker(m_mutex);
        m_media = nullptr;
    }
    libvlc_media_release(media);
}

// Queued from libvlc's threads.
void VxVlcPlayerQml::resizeToFrame()
{
    QSize size;
    {
        const std::lock_guard locker(m_mutex);
        size = m_videoTrack.size;
    }
    if (!size.isEmpty())
        setSize(size);
}

void VxVlcPlayerQml::initFakeSurfaces()
{
    if (m_session && m_root)
        m_session->makeSurface(m_root);
}
