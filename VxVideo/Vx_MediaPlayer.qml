// SPDX-License-Identifier: GPL-3.0-or-later
// The video player, whichever back end plays. Uses vxVideoPlugin.
import QtQuick 2.12

Loader {
    id: root

    // The numbers are those of MediaPlayer in QtMultimedia, which need not be loaded for them.
    enum PlaybackState {
        StoppedState,
        PlayingState,
        PausedState
    }
    enum Status {
        UnknownStatus,
        NoMedia,
        Loading,
        Loaded,
        Stalled,
        Buffering,
        Buffered,
        EndOfMedia,
        InvalidMedia
    }

    property string backend: vxVideoPlugin.currentPlugin
    // The one that plays, chosen once: a back end that is set later is for the next start.
    property string loadedBackend
    property url mediaSource
    property var fileMetadata: ({})
    property string logMessage
    property string errorString
    property int playbackState: Vx_MediaPlayer.StoppedState
    property int playerStatus: Vx_MediaPlayer.NoMedia
    // Milliseconds.
    property int duration: 0
    property int position: 0
    property real volume: 0.5
    property bool nativeSize: true
    property real yaw: 0.0
    property real pitch: 0.0
    property real roll: 0.0
    // The picture: a texture's name or, where that stays 0, an item of the scene.
    property int textureId: 0
    property Item shaderEffectSource: null
    property int fps: 0
    property string textureTransfer
    property string texturePixelFormat

    signal seekRequested()
    // Where the picture is a texture's name, its size.
    signal frameSizeTold(size frameSize)

    function pause() {
        if (item)
            item.pause();
    }

    function play() {
        if (item && mediaSource.toString() !== "")
            item.play();
    }

    function stop() {
        if (item)
            item.stop();
    }

    function restart() {
        if (item && mediaSource.toString() !== "")
            item.restart();
    }

    // At the end of a medium: true if it was over before anybody could look at it.
    function wasBrief() {
        return item !== null && item.wasBrief !== undefined && item.wasBrief();
    }

    // Milliseconds from the beginning.
    function seek(offset) {
        if (item)
            item.seek(offset);
        seekRequested();
    }

    // A jump out of the medium leads to its beginning.
    function seekJump(delta) {
        var target = position + delta;
        seek(target < 0 || target > duration ? 0 : target);
    }

    // A back end whose module is not installed.
    function tellMissingBackend() {
        if (status !== Loader.Error || mediaSource.toString() === "")
            return;
        errorString = qsTr("The video backend \"%1\" cannot be loaded.").arg(loadedBackend);
        playerStatus = Vx_MediaPlayer.InvalidMedia;
    }

    onStatusChanged: tellMissingBackend()
    onMediaSourceChanged: tellMissingBackend()
    Component.onCompleted: {
        loadedBackend = backend;
        setSource(backend === "vlc" ? "Vx_MediaPlayer_VLC.qml" : "Vx_MediaPlayer_Qt.qml",
                  { "player": root });
    }
}
