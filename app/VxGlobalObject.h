// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The central controller, `vxGlobalObject` of the interface: the camera with its limits and its
// inertia, the road from a path to a playing medium, the playlist and the slide show.

#include "app/CameraMath.h"
#include "app/FileInquiry.h"
#include "app/MediaSurvey.h"
#include "app/MediumAdvisor.h"
#include "app/ShowProgress.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QMatrix4x4>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QVariantMap>

class QPropertyAnimation;
class PicturePrefetch;
class VxContext;

/// Camera, media road and playlist. Angles are radians, the field of view is degrees. All members
/// belong to the main thread; the view reads them while the main thread is held.
class VxGlobalObject : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString videoLogMessage READ videoLogMessage WRITE setVideoLogMessage NOTIFY
                   videoLogMessageChanged)
    /// A medium was asked for and is looked at; its player does not know it yet. The signal follows
    /// when the player knows.
    Q_PROPERTY(bool opening READ isOpening NOTIFY openingChanged)
    Q_PROPERTY(float yaw READ yaw WRITE setYaw NOTIFY yawChanged)
    Q_PROPERTY(float pitch READ pitch WRITE setPitch NOTIFY pitchChanged)
    Q_PROPERTY(float roll READ roll WRITE setRoll NOTIFY rollChanged)
    Q_PROPERTY(float yawMin READ yawMin WRITE setYawMin NOTIFY yawMinChanged)
    Q_PROPERTY(float yawMax READ yawMax WRITE setYawMax NOTIFY yawMaxChanged)
    Q_PROPERTY(float pitchMin READ pitchMin WRITE setPitchMin NOTIFY pitchMinChanged)
    Q_PROPERTY(float pitchMax READ pitchMax WRITE setPitchMax NOTIFY pitchMaxChanged)
    Q_PROPERTY(float fov READ fov WRITE setFov NOTIFY fovChanged)
    Q_PROPERTY(float fovLimitMin READ fovLimitMin NOTIFY fovLimitMinChanged)
    Q_PROPERTY(float fovLimitMax READ fovLimitMax NOTIFY fovLimitMaxChanged)
    Q_PROPERTY(QMatrix4x4 rotationMatrix READ rotationMatrix WRITE setRotationMatrix NOTIFY
                   rotationMatrixChanged)
    Q_PROPERTY(
        int playListIndex READ playListIndex WRITE choosePlayListIndex NOTIFY playListIndexChanged)
    Q_PROPERTY(bool touchMode READ touchMode WRITE setTouchMode NOTIFY touchModeChanged)
    Q_PROPERTY(bool splitView READ splitView WRITE setSplitView NOTIFY splitViewChanged)
    Q_PROPERTY(bool tv3dView READ tv3dView WRITE setTv3dView NOTIFY tv3dViewChanged)
    Q_PROPERTY(int outputDisplay READ outputDisplay NOTIFY outputDisplayChanged)
    Q_PROPERTY(bool adobePlugin READ adobePlugin NOTIFY adobePluginChanged)
    Q_PROPERTY(bool touchTable READ touchTable NOTIFY touchTableChanged)
    Q_PROPERTY(float yawInterpolate READ yawInterpolate WRITE setYawInterpolate NOTIFY
                   yawInterpolateChanged)
    Q_PROPERTY(float pitchInterpolate READ pitchInterpolate WRITE setPitchInterpolate NOTIFY
                   pitchInterpolateChanged)
    Q_PROPERTY(int loopMode READ loopMode WRITE setLoopMode NOTIFY loopModeChanged)
    Q_PROPERTY(int projectionSourceSetting READ projectionSourceSetting NOTIFY
                   projectionSourceSettingChanged)

public:
    /// What happens at the end of a medium.
    enum LoopMode {
        NoLoop = 0,
        LoopAll = 1,
        LoopFile = 2,
    };

    /// Leaving the event loop with this code starts the program anew.
    static constexpr int kRestartExitCode = 123456789;

    /// \a context must outlive the object and have its settings, its window (a QQuickView) and
    /// its texture provider.
    explicit VxGlobalObject(VxContext *context);

    QString videoLogMessage() const { return m_videoLogMessage; }

    void setVideoLogMessage(const QString &message);

    float yaw() const { return m_angles.yaw; }

    float pitch() const { return m_angles.pitch; }

    float roll() const { return m_angles.roll; }

    /// Store the wrapped angle; with \a updateMatrix the camera's matrix follows.
    void setYaw(float radians, bool updateMatrix = true);
    void setPitch(float radians, bool updateMatrix = true);
    void setRoll(float radians, bool updateMatrix = true);

    float yawMin() const { return m_yawMin; }

    float yawMax() const { return m_yawMax; }

    float pitchMin() const { return m_pitchMin; }

    float pitchMax() const { return m_pitchMax; }

    void setYawMin(float radians);
    void setYawMax(float radians);
    void setPitchMin(float radians);
    void setPitchMax(float radians);

    float fov() const { return m_fov; }

    float fovLimitMin() const { return m_fovLimitMin; }

    float fovLimitMax() const { return m_fovLimitMax; }

    /// The camera's rotation, corrected by the medium's initial orientation.
    QMatrix4x4 rotationMatrix() const { return m_correction * m_cameraMatrix; }

    /// Stores the camera's rotation without the correction. \a updateEuler derives the angles from
    /// it; \a restartTimer counts it as a move of the user.
    void setRotationMatrix(const QMatrix4x4 &matrix, bool updateEuler = true,
                           bool restartTimer = true);
    /// The correction by which a medium that was taken askew stands upright; radians. The yaw is
    /// kept but does not turn the picture.
    void setInitialOrientation(float yaw, float pitch, float roll);
    /// What input devices add to the camera's angles; radians.
    void setOffsetOrientation(const CameraMath::EulerAngles &offset);
    /// The pitch as the view uses it, in radians: kept inside the picture for a flat source,
    /// wrapped otherwise.
    float adjustedPitch() const;

    /// True for five seconds after the user moved the camera.
    bool isUserInteracting() const { return m_interactionTimer.isActive(); }

    int playListIndex() const { return m_playListIndex; }

    /// As the user's choice.
    void choosePlayListIndex(int index);

    bool touchMode() const { return m_touchMode; }

    void setTouchMode(bool inverted);

    bool splitView() const { return m_splitView; }

    void setSplitView(bool split);

    bool tv3dView() const { return m_tv3dView; }

    void setTv3dView(bool tv3d);
    /// 0 standard, 1 3D television, 2 split.
    int outputDisplay() const;
    bool adobePlugin() const;
    bool touchTable() const;

    float yawInterpolate() const { return m_yawInterpolate; }

    float pitchInterpolate() const { return m_pitchInterpolate; }

    void setYawInterpolate(float radians);
    void setPitchInterpolate(float radians);

    int loopMode() const { return m_loopMode; }

    /// Stores the remainder by the number of modes, so that a button can step through them.
    void setLoopMode(int mode);
    int projectionSourceSetting() const;

    /// Sets the field of view in degrees. Outside the limits it becomes 90 with \a reset, and the
    /// nearer limit without.
    Q_INVOKABLE void setFov(float degrees, bool reset = false);
    /// Turns the camera to the orientation that \a metadata gives, or to that of the current
    /// medium, and opens the field of view that the source asks for.
    Q_INVOKABLE void resetYawPitchRollFov(const QVariantMap &metadata);
    Q_INVOKABLE void resetYawPitchRollFov();

    Q_INVOKABLE QString platformOS() const { return QString(); }

    Q_INVOKABLE QString getApplicationDirPath() const;
    Q_INVOKABLE QString aboutThirdParty() const;
    Q_INVOKABLE void hideCursor();
    Q_INVOKABLE void restoreCursor();
    Q_INVOKABLE void restart();
    Q_INVOKABLE QString getEnterpriseWebLink() const;
    Q_INVOKABLE QString getSoftwareName() const;
    /// Makes the native player report its position often enough for the seek bar.
    Q_INVOKABLE void hackQmlMediaPlayer(QObject *player);
    /// The arguments of the video back end, joined by commas: \a what is "instance" or "media",
    /// \a custom chooses the user's own instead of the defaults.
    Q_INVOKABLE QString getVlcCmdInfos(bool custom, const QString &what) const;
    Q_INVOKABLE void setVlcCustomCmd(const QString &what, const QString &cmd);
    Q_INVOKABLE bool isVlcCustom() const;

    bool isOpening() const { return m_mediumInquiry.isAsking() || m_passesOver; }

    /// Opens one path or URL.
    Q_INVOKABLE void openFile(const QString &url, bool dragAndDrop = false);
    /// Opens paths or URLs: "http", "https", "rtsp", "udp" and "file" are URLs, the rest paths.
    Q_INVOKABLE void openFiles(const QStringList &files, bool dragAndDrop = false);
    /// Opens a medium, a folder or a playlist file, or several media as a playlist. What lies on a
    /// disk is looked at first, on another thread; what is opened meanwhile takes its place.
    Q_INVOKABLE void openFiles(QList<QUrl> urls, bool dragAndDrop = false);

    Q_INVOKABLE bool playListIsEmpty() const { return m_playlist.isEmpty(); }

    Q_INVOKABLE QList<QUrl> getPlayList() const { return m_playlist; }

    Q_INVOKABLE QStringList getPlayListNames() const;
    Q_INVOKABLE void clearPlayList();
    Q_INVOKABLE void playListSetPrevious();
    /// The next entry; without \a forceNext the loop mode decides what follows the last.
    Q_INVOKABLE void playListSetNext(bool forceNext = true);

    Q_INVOKABLE QUrl getDynamicLogo(const QUrl &media) const { return m_logoMap.value(media); }

    /// The thumbnail of the playlist file, else a picture of the medium's name beside it.
    Q_INVOKABLE QString getThumb(const QUrl &media) const;

    Q_INVOKABLE QString getStereoConfig(const QUrl &media) const
    {
        return m_stereoMap.value(media);
    }

    Q_INVOKABLE bool isImageFile(const QUrl &url) const;
    Q_INVOKABLE int isVideoFile(const QUrl &url) const;

    /// Always true: no path is refused before its player tried it.
    Q_INVOKABLE bool isValidFilePath(const QUrl &) const { return true; }

    Q_INVOKABLE bool isFile(const QUrl &url) const;
    /// The URL that a player can open: a resource is addressed as a file.
    Q_INVOKABLE QUrl checkFilePath(QUrl url) const;
    Q_INVOKABLE QStringList getSupportedImageFormats() const;
    Q_INVOKABLE QStringList getSupportedVideoFormats() const;

    Q_INVOKABLE void setMediaLoader(QObject *mediaLoader) { m_mediaLoader = mediaLoader; }

    /// For the media loader, before it gives \a medium to a player: true for what this object has
    /// asked it to open. Anything else, as a script or a master's slave may ask for it, is looked
    /// at first and comes back to the loader then, unless it is on its way already or was refused
    /// last.
    Q_INVOKABLE bool admits(const QUrl &medium, bool clearPlaylist, bool dragAndDrop);
    /// For the media loader, when \a medium cannot be shown. Returns what the user must be told
    /// instead of \a message, or nothing when the show goes on without it.
    Q_INVOKABLE QString refuse(const QUrl &medium, const QString &message);
    /// The medium is seen or heard.
    Q_INVOKABLE void noteShown();
    /// Looks why \a medium could not be shown, or the last one that was asked for if it is empty;
    /// the answer comes soon as failureExplained().
    Q_INVOKABLE void explainFailure(const QUrl &medium, const QString &message);

    QObject *mediaLoader() const { return m_mediaLoader; }

    Q_INVOKABLE void startTimerNextImage();
    Q_INVOKABLE void resumeTimerNextImage();
    Q_INVOKABLE void pauseTimerNextImage();

    /// Reads what a medium says of itself and applies it: projection, stereo layout, orientation.
    Q_INVOKABLE QVariantMap readMetaData(const QVariant &url);
    /// The text of the debug panel for what readMetaData() found.
    Q_INVOKABLE QString logMetaData(const QVariant &url, const QVariantMap &metadata) const;

    /// Looks on a worker thread whether \a url can be shown as a picture, before a decoder gets
    /// it; the answer comes as imageInspected().
    Q_INVOKABLE void inspectImage(const QUrl &url);
    /// What an Image must load to show a file: the file, or what was decoded of it ahead.
    Q_INVOKABLE QUrl pictureSource(const QUrl &url) const;

    /// True if the program was started with what is probably a picture.
    Q_INVOKABLE bool beginsWithPicture() const { return m_prefetch != nullptr; }

    void setPicturePrefetch(PicturePrefetch *prefetch) { m_prefetch = prefetch; }

public Q_SLOTS:
    /// Moves \a property to \a newValue in \a duration milliseconds, ever slower. With \a cumul the
    /// value is added to where a running move would have ended.
    void interpolateValue(const QByteArray &property, float newValue, int duration = 200,
                          bool cumul = false);
    void resetYawInterpolate();
    void resetPitchInterpolate();
    void stopCameraAnimation();
    void onSettingsChanged(const QString &key);
    void onTextureSizeChanged();
    void onProjectionChanged();
    void setFovLimits();
    void imageTimeoutSetNext();
    /// Ends the program: the video player goes first, then the event loop.
    void quit();

Q_SIGNALS:
    void videoLogMessageChanged();
    void yawChanged();
    void pitchChanged();
    void rollChanged();
    void yawMinChanged();
    void yawMaxChanged();
    void pitchMinChanged();
    void pitchMaxChanged();
    void fovChanged();
    void fovLimitMinChanged();
    void fovLimitMaxChanged();
    void rotationMatrixChanged();
    /// The program is about to end with this code; what may hang comes after it.
    void ending(int exitCode);
    void openingChanged();
    void playListIndexChanged();
    void playListChanged();
    void touchModeChanged();
    void splitViewChanged();
    void tv3dViewChanged();
    void outputDisplayChanged();
    void adobePluginChanged();
    void touchTableChanged();
    void yawInterpolateChanged();
    void pitchInterpolateChanged();
    void loopModeChanged();
    void projectionSourceSettingChanged();
    void endOfPlaylistReached();
    /// An entry of the list cannot be shown, and the show goes on without it.
    void passedOver(const QString &fileName);
    /// The answer to inspectImage(): whether the picture can be given to its player.
    void imageInspected(const QUrl &url, bool usable);
    /// A usable picture is not complete.
    void imageCut(const QUrl &url);
    /// The answer to explainFailure(): the message, and below it what helps.
    void failureExplained(const QString &message, const QString &advice);

private:
    void end(int exitCode);
    void rebuildMatrix();
    void setFovLimitMin(float degrees);
    void setFovLimitMax(float degrees);
    bool isAnimationRunning(const QByteArray &property) const;
    QVariant setting(const QString &key) const;
    /// The player that is current in the interface; null before there is one.
    QObject *currentPlayer() const;
    QVariantMap currentMetadata() const;
    void applyStereoMode(const QVariantMap &metadata);
    void applyProjection(const QVariantMap &metadata);
    void open(const MediaSurvey::Findings &findings, bool dragAndDrop);
    void processFileSource(const QUrl &source, const QString &error, bool dragAndDrop);
    void giveToLoader(const QUrl &source, const QString &error, bool dragAndDrop);
    void inspectEnd(const QUrl &url, const QString &path);
    void setPlayListIndex(int index, bool dragAndDrop = false);
    void stopPassingOver();
    void tryNextEntry();

    struct ReadAhead
    {
        QUrl medium;
        QVariantMap metadata;
    };

    VxContext *m_context; // not owned
    QPointer<QObject> m_mediaLoader; // not owned: an item of the interface
    PicturePrefetch *m_prefetch = nullptr; // not owned: the engine's

    QString m_videoLogMessage = QStringLiteral("No loaded media.");
    CameraMath::EulerAngles m_angles;
    CameraMath::EulerAngles m_initialAngles;
    CameraMath::EulerAngles m_offsetAngles;
    float m_yawMin;
    float m_yawMax;
    float m_pitchMin;
    float m_pitchMax;
    float m_fov = 90;
    float m_fovLimitMin = 20;
    float m_fovLimitMax = 300;
    QMatrix4x4 m_cameraMatrix;
    QMatrix4x4 m_correction;
    float m_yawInterpolate = 0;
    float m_pitchInterpolate = 0;
    QHash<QByteArray, QPropertyAnimation *> m_animations; // children of this object
    QTimer m_interactionTimer{this};

    bool m_touchMode = false;
    bool m_splitView = false;
    bool m_tv3dView = false;
    int m_loopMode = NoLoop;

    QList<QUrl> m_playlist;
    int m_playListIndex = -1;
    QMap<QUrl, QUrl> m_logoMap;
    QMap<QUrl, QUrl> m_thumbMap;
    QMap<QUrl, QString> m_stereoMap;
    QTimer m_nextImageTimer{this};
    int m_imageDisplayTime = 0; // milliseconds
    int m_imageRemaining = 0; // milliseconds
    bool m_noTimeout = false;
    ReadAhead m_readAhead; // of the medium that is about to be opened
    ShowProgress m_progress;
    bool m_passesOver = false; // the next entry is about to be tried
    QUrl m_asked; // what the user asked for last: a medium, a folder or a list
    QUrl m_onItsWay; // asked for and neither seen nor refused yet
    QUrl m_refused; // the last medium, if it could not be shown
    bool m_isGiving = false; // to the media loader
    FileInquiry m_mediumInquiry;
    FileInquiry m_pictureInquiry;
    MediumAdvisor m_advisor;
};
