// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Plays a medium through libvlc and delivers each picture as an OpenGL texture. libvlc only
// decodes, into memory that this item hands it; it has no window of its own.

#include "video/VideoFormat.h"

#include <QQuickPaintedItem>
#include <QTimer>
#include <QUrl>
#include <QVariantMap>

#include <atomic>
#include <memory>
#include <mutex>

class DecoderTarget;
class QOpenGLContext;
class VlcSession;
struct libvlc_event_t;
struct libvlc_media_player_t;
struct libvlc_media_t;

/// A player item that paints nothing: `textureId` is its picture. It is a painted item for the
/// sake of one visit of the scene graph's rendering thread, where its context begins to share with
/// the scene graph's. Properties and commands belong to the main thread. textureIdChanged(),
/// fpsChanged(), textureTransferChanged(), texturePixelFormatChanged() and frameDisplayed() come
/// from libvlc's threads; all other signals from the main thread.
class VxVlcPlayerQml : public QQuickPaintedItem
{
    Q_OBJECT
    /// Writing it opens the medium, also when it is the same; an empty URL is ignored.
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged)
    /// From 0 to 1; negative while libvlc has no audio output.
    Q_PROPERTY(float volume READ volume WRITE setVolume NOTIFY volumeChanged)
    /// The item takes the size of the frame.
    Q_PROPERTY(bool nativeSize READ nativeSize WRITE setNativeSize NOTIFY nativeSizeChanged)
    // Kept for spatial audio; the picture does not depend on them.
    Q_PROPERTY(float yaw READ yaw WRITE setYaw NOTIFY yawChanged)
    Q_PROPERTY(float pitch READ pitch WRITE setPitch NOTIFY pitchChanged)
    Q_PROPERTY(float roll READ roll WRITE setRoll NOTIFY rollChanged)
    /// The GL texture with the picture, in a context that shares with the scene graph's; 0: none.
    Q_PROPERTY(int textureId READ textureId WRITE setTextureId NOTIFY textureIdChanged)
    /// Somebody beside the window takes the texture, as a headset does: pictures are wanted while
    /// the window is hidden, too.
    Q_PROPERTY(
        bool seenElsewhere READ seenElsewhere WRITE setSeenElsewhere NOTIFY seenElsewhereChanged)
    Q_PROPERTY(bool paintTexture READ paintTexture WRITE setPaintTexture NOTIFY paintTextureChanged)
    /// Pictures displayed in the last second.
    Q_PROPERTY(int fps READ fps NOTIFY fpsChanged)
    Q_PROPERTY(QString textureTransfer READ textureTransfer NOTIFY textureTransferChanged)
    Q_PROPERTY(QString texturePixelFormat READ texturePixelFormat NOTIFY texturePixelFormatChanged)
    /// What the file says about itself; "Writing Tool" is read when a picture format is set up.
    Q_PROPERTY(
        QVariantMap fileMetadata READ fileMetadata WRITE setFileMetadata NOTIFY fileMetadataChanged)

public:
    /// libvlc's states, with its numbers.
    enum VlcState {
        Idle = 0,
        Opening = 1,
        Buffering = 2,
        Playing = 3,
        Paused = 4,
        Stopped = 5,
        Ended = 6,
        Error = 7
    };
    Q_ENUM(VlcState)

    explicit VxVlcPlayerQml(QQuickItem *parent = nullptr);
    ~VxVlcPlayerQml() override;

    QUrl source() const { return m_source; }

    void setSource(const QUrl &source) { openFile(source); }

    float volume() const;
    void setVolume(float volume);

    bool nativeSize() const { return m_nativeSize; }

    void setNativeSize(bool nativeSize);

    float yaw() const { return m_yaw; }

    void setYaw(float yaw);

    float pitch() const { return m_pitch; }

    void setPitch(float pitch);

    float roll() const { return m_roll; }

    void setRoll(float roll);

    int textureId() const { return m_textureId; }

    /// On any thread.
    void setTextureId(int textureId);

    bool seenElsewhere() const { return m_seenElsewhere; }

    void setSeenElsewhere(bool seenElsewhere);

    bool paintTexture() const { return m_paintTexture; }

    void setPaintTexture(bool paintTexture);

    int fps() const { return m_fps; }

    QString textureTransfer() const;
    QString texturePixelFormat() const;
    QVariantMap fileMetadata() const;
    void setFileMetadata(const QVariantMap &fileMetadata);

    Q_INVOKABLE void openFile(const QUrl &url);
    Q_INVOKABLE void pause();
    /// After the end or an error the medium is opened anew.
    Q_INVOKABLE void play();
    /// \a afresh: with all that libvlc asks at an opening, as other options need it.
    Q_INVOKABLE void restart(bool afresh = false);
    /// No picture is left, and none comes any more. Returns when libvlc's threads for this medium
    /// have ended; those that take long, because a server or a disk does not answer, end by
    /// themselves.
    Q_INVOKABLE void stop();
    /// `offset` in milliseconds from the beginning.
    Q_INVOKABLE void seek(int offset);
    Q_INVOKABLE void updateAudioDelay();
    /// At the end of a medium: true if it was over before anybody could look at it. Its last
    /// picture stays until the player is stopped or plays again.
    Q_INVOKABLE bool wasBrief() const;

    /// Paints nothing.
    void paint(QPainter *) override { }

Q_SIGNALS:
    void sourceChanged();
    void volumeChanged();
    void nativeSizeChanged();
    void yawChanged();
    void pitchChanged();
    void rollChanged();
    void textureIdChanged();
    void seenElsewhereChanged();
    void paintTextureChanged();
    void fpsChanged();
    void textureTransferChanged();
    void texturePixelFormatChanged();
    void fileMetadataChanged();
    /// Milliseconds.
    void durationChanged(int duration);
    void errorStringChanged(const QString &errorString);
    /// Milliseconds.
    void positionChanged(int position);
    void vlcStateChanged(int vlcState);
    /// The medium's pictures are of this size.
    void frameSizeTold(const QSize &size);
    /// A new picture is in the texture, whose id stays the same. On the decoder's thread, which a
    /// direct receiver holds up. Not while the item's window is hidden, unless the picture is seen
    /// elsewhere: nobody pays for pictures that nobody sees. Nor for the same picture again, which
    /// libvlc shows while it is paused.
    void frameDisplayed();

protected:
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private Q_SLOTS:
    void resizeToFrame();
    void computeFps();
    void initFakeSurfaces();
    void initVlcPlayerInstance();
    void initVlcMediaInstance();
    void desinitVlcPlayerInstance();
    void desinitVlcMediaInstance();
    void updateTexture(DecoderTarget &target);

private:
    // The first pictures of a stream are often incomplete.
    static constexpr int kSkippedDisplays = 2;

    struct VideoTrack
    {
        QSize size; // empty while unknown
        quint32 codec = 0;
    };

    // On libvlc's threads. The opaque object is a session, which may have left the item.
    static unsigned onFormat(void **opaque, char *chroma, unsigned *width, unsigned *height,
                             unsigned *pitches, unsigned *lines);
    static void onCleanup(void *opaque);
    static void *onLock(void *opaque, void **planes);
    static void onUnlock(void *opaque, void *picture, void *const *planes);
    static void onDisplay(void *opaque, void *picture);
    static void onEvent(const libvlc_event_t *event, void *opaque);
    // And these for a session that the item still has.
    unsigned format(VlcSession *session, char *chroma, unsigned *width, unsigned *height,
                    unsigned *pitches, unsigned *lines);
    void forgetPicture(unsigned kept = 0);
    bool display(DecoderTarget &target);
    void handleEvent(const libvlc_event_t *event);
    VideoTrack readTracks(libvlc_media_t *media);
    VideoTrack trackForFormat(unsigned width, unsigned height);

    // On the rendering thread, once.
    bool makeRoot();

    void watchWindow(QQuickWindow *itemWindow);
    void findViewers();

    // On the main thread, in the order in which libvlc reported.
    void handleState(int generation, int state, const QString &error);
    void handleError(int generation, const QString &error);
    void handleTime(int generation, qint64 time);
    void handleVolume(int generation);
    void applyVolume();
    void handleDuration(int generation, qint64 duration);
    bool hasTrack(int type) const;
    bool endedUnseen() const;
    void open(bool again);
    void startPlaying();
    void playWhenThereIsRoom();
    libvlc_media_player_t *player() const;
    bool endMedium();

    QUrl m_source;
    float m_yaw = 0;
    float m_pitch = 0;
    float m_roll = 0;
    bool m_seenElsewhere = false;
    bool m_paintTexture = false;
    int m_volumePercent = -1; // as set last; -1: never
    bool m_volumePending = false; // until this run has reported its first time
    int m_state = Idle; // as last reported
    bool m_errorTold = false;
    int m_durationTold = 0;
    // Shares with the scene graph's context, and the decoders' with it. Null until the first visit
    // of the rendering thread.
    std::shared_ptr<QOpenGLContext> m_root;
    std::shared_ptr<VlcSession> m_session; // null before the first opening, and after a hung one
    libvlc_media_t *m_media = nullptr; // changed under m_mutex
    QTimer m_beginning; // while an abandoned player still holds the memory that the next needs
    bool m_pausePending = false; // asked for before the player can
    int m_seekPending = -1; // the same, in milliseconds; -1: none
    QTimer m_rest; // until free memory is given back
    QMetaObject::Connection m_visibility; // of the item's window

    // Reports of earlier openings, which may still be queued, bear a smaller number.
    std::atomic<int> m_generation{0};
    std::atomic<bool> m_seen{false}; // by anyone
    std::atomic<bool> m_nativeSize{false};
    std::atomic<bool> m_shaderColorConversion{false};
    std::atomic<int> m_textureId{0};
    std::atomic<int> m_transfer{0};
    std::atomic<VideoFormat> m_format{VideoFormat::None};
    std::atomic<int> m_fps{0};
    std::atomic<int> m_displays{0}; // since opening
    // The medium has so few pictures that none may be skipped.
    std::atomic<bool> m_hasFewPictures{false};

    // Of the decoder's thread.
    std::atomic<int> m_fpsCounter{0};
    qint64 m_fpsSecond = 0;

    mutable std::mutex m_mutex; // guards what follows, and m_media
    VideoTrack m_videoTrack;
    QVariantMap m_fileMetadata;
};
