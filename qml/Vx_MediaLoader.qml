// SPDX-License-Identifier: GPL-3.0-or-later
// Gives each medium to the player that can show it and hands that player's texture to the view.
// Uses vxGlobalObject, vxSettings, vxShaderCodeBuilder, vxTextureProvider, vxView.
import QtQuick 2.15
import "qrc:/VxVideo"

Item {
    id: loader

    property QtObject mediaPlayer: imagePlayer
    readonly property url mediaSource: mediaPlayer.mediaSource
    readonly property var fileMetadata: mediaPlayer.fileMetadata
    readonly property bool isVideo: mediaPlayer === videoPlayer

    property bool awaitsFirstPicture: vxGlobalObject.beginsWithPicture()
    // The last picture of a film that is over at once stays like a still image, for its time.
    property bool isHeld: false

    readonly property real volumeStep: 0.05
    // What only custom arguments can describe is told there.
    readonly property string commandLineDocumentation: "https://www.tavro.example/documentation/command-line"

    // What may have led to errorString, and what helps.
    property string advice: ""

    signal displayMessage(string message, string advice)
    signal changeRootState(string newState)

    function processFileSource(fileSource, clearPlaylist, error, dragAndDrop) {
        if (error === "" && fileSource.toString() !== ""
                && !vxGlobalObject.admits(fileSource, clearPlaylist, dragAndDrop))
            return;
        advice = "";
        isHeld = false;
        mediaPlayer.mediaSource = "";
        mediaPlayer.errorString = "";
        vxView.updateTitle(fileSource);
        if (clearPlaylist)
            vxGlobalObject.clearPlayList();

        let url = fileSource;
        if (error === "") {
            url = vxGlobalObject.checkFilePath(fileSource);
            error = choosePlayer(url);
            vxView.updateTitle(url);
        }

        // What the medium before said of itself must not turn this one, and its size must be told
        // again, be it the same.
        vxTextureProvider.textureSize = Qt.size(-1, -1);
        mediaPlayer.fileMetadata = {};
        const fileMetadata = vxGlobalObject.readMetaData(url);
        const log = vxGlobalObject.logMetaData(url, fileMetadata);
        if (error === "") {
            mediaPlayer.fileMetadata = fileMetadata;
            mediaPlayer.logMessage = log;
            mediaPlayer.mediaSource = url;
        } else {
            mediaPlayer.fileMetadata = {};
            mediaPlayer.mediaSource = "";
            mediaPlayer.logMessage = "";
            refuse(url, error);
        }
        if (dragAndDrop)
            changeRootState("Video");
    }

    // Makes the player for the medium the current one; returns what keeps it from being shown.
    function choosePlayer(url) {
        if (!vxGlobalObject.isValidFilePath(url))
            return qsTr("Cannot open the file") + " '" + url + "'.";
        if (vxGlobalObject.isImageFile(url)) {
            videoPlayer.pause();
            videoPlayer.mediaSource = "";
            mediaPlayer = imagePlayer;
            return "";
        }
        const kind = vxGlobalObject.isVideoFile(url);
        // A stream is a video whatever its address ends with.
        if (kind === 1 || !vxGlobalObject.isFile(url)) {
            imagePlayer.mediaSource = "";
            mediaPlayer = videoPlayer;
            return "";
        }
        if (kind === 2)
            return qsTr("Raw video format is only supported with custom VLC arguments.<br />See <a href=\"%1\">documentation</a>.")
                .arg(commandLineDocumentation);
        return qsTr("The file format is not supported.");
    }

    function play() {
        if (isHeld && videoPlayer.playbackState === Vx_MediaPlayer.PausedState) {
            vxGlobalObject.resumeTimerNextImage();
            videoPlayer.playbackState = Vx_MediaPlayer.PlayingState;
            return;
        }
        isHeld = false;
        mediaPlayer.play();
    }

    function pause() {
        if (!isHeld) {
            mediaPlayer.pause();
            return;
        }
        vxGlobalObject.pauseTimerNextImage();
        videoPlayer.playbackState = Vx_MediaPlayer.PausedState;
    }

    function playPause() {
        if (mediaPlayer.playbackState === Vx_MediaPlayer.PlayingState)
            pause();
        else
            play();
    }

    function stop() {
        videoPlayer.playerStatus = Vx_MediaPlayer.NoMedia;
        processFileSource("", true, "", false);
        mediaPlayer.stop();
    }

    // percent: 0 to 1.
    function seek(percent) {
        mediaPlayer.seek(percent * mediaPlayer.duration);
    }

    // delta in milliseconds.
    function seekJump(delta) {
        mediaPlayer.seekJump(delta);
    }

    function seekJumpDown() {
        seekJump(-mediaPlayer.duration / 20);
    }

    function seekJumpUp() {
        seekJump(mediaPlayer.duration / 20);
    }

    function volumeUp() {
        videoPlayer.volume = Math.min(1, videoPlayer.volume + volumeStep);
    }

    function volumeDown() {
        videoPlayer.volume = Math.max(0, videoPlayer.volume - volumeStep);
    }

    // Follows the playback of a master. A stop is not followed: it left 4K sources black.
    function syncPlaybackState(masterState) {
        switch (masterState) {
        case Vx_MediaPlayer.PlayingState:
            play();
            break;
        case Vx_MediaPlayer.PausedState:
            pause();
            break;
        case Vx_MediaPlayer.StoppedState:
            break;
        default:
            console.error("Unknown playback state of the master:", masterState);
            break;
        }
    }

    // Only at quit: playback must have ended before the program does.
    function destroyVideoPlayer() {
        videoPlayer.stop();
        mediaPlayer = imagePlayer;
        videoPlayer.source = "";
    }

    function handleEndOfMedia() {
        // The user has chosen what comes next.
        if (vxGlobalObject.opening)
            return;
        if (videoPlayer.wasBrief()) {
            isHeld = true;
            videoPlayer.playbackState = Vx_MediaPlayer.PlayingState;
            videoPlayer.playerStatus = Vx_MediaPlayer.Buffered;
            vxGlobalObject.startTimerNextImage();
            return;
        }
        if (!vxGlobalObject.playListIsEmpty())
            vxGlobalObject.playListSetNext(false);
        else if (vxGlobalObject.loopMode > 0)
            videoPlayer.restart();
        else
            stop();
    }

    // Leaves the player with an empty source.
    function handleFailure() {
        const medium = mediaPlayer.mediaSource;
        const message = mediaPlayer.errorString || qsTr("The medium cannot be played.");
        // The message stays until the user goes on, however much of the picture was seen.
        vxGlobalObject.pauseTimerNextImage();
        mediaPlayer.mediaSource = "";
        refuse(medium, message);
    }

    // The words stay for the info screen, unless the show goes on.
    function refuse(medium, message) {
        mediaPlayer.errorString = vxGlobalObject.refuse(medium, message);
        if (mediaPlayer.errorString !== "")
            vxGlobalObject.explainFailure(medium, mediaPlayer.errorString);
    }

    function watchPlayer() {
        // Not the property: a change of the player arrives here before its bindings follow.
        const video = mediaPlayer === videoPlayer;
        vxTextureProvider.setShaderEffectSource(mediaPlayer.shaderEffectSource, !video);
        vxShaderCodeBuilder.invertedColors = video && videoPlayer.loadedBackend === "vlc"
            && !vxTextureProvider.isSharedMemory();
        vxTextureProvider.textureId = mediaPlayer.textureId;
    }

    onMediaPlayerChanged: watchPlayer()
    Component.onCompleted: {
        vxGlobalObject.setMediaLoader(loader);
        watchPlayer();
    }

    Connections {
        target: loader.mediaPlayer

        function onTextureIdChanged() {
            vxTextureProvider.textureId = loader.mediaPlayer.textureId;
        }

        function onShaderEffectSourceChanged() {
            loader.watchPlayer();
        }

        // Also where there is only sound.
        function onPositionChanged() {
            if (loader.mediaPlayer.position > 0
                    && loader.mediaPlayer.playerStatus === Vx_MediaPlayer.Buffered)
                vxGlobalObject.noteShown();
        }

        function onPlayerStatusChanged() {
            switch (loader.mediaPlayer.playerStatus) {
            case Vx_MediaPlayer.InvalidMedia:
                loader.handleFailure();
                break;
            case Vx_MediaPlayer.EndOfMedia:
                loader.handleEndOfMedia();
                break;
            case Vx_MediaPlayer.Loaded:
                if (imagePlayer.mediaSource.toString() === ""
                        && videoPlayer.mediaSource.toString() === "")
                    videoPlayer.playerStatus = Vx_MediaPlayer.NoMedia;
                break;
            default:
                break;
            }
        }
    }

    Connections {
        target: vxGlobalObject

        function onEndOfPlaylistReached() {
            loader.stop();
        }

        function onFailureExplained(message, advice) {
            if (loader.mediaPlayer.errorString === message)
                loader.advice = advice;
            loader.displayMessage(message, advice);
        }
    }

    Vx_MediaPlayer {
        id: videoPlayer

        // The first picture need not wait for the item that plays videos, which makes contexts of
        // OpenGL of its own.
        asynchronous: true
        active: loader.isVideo || !loader.awaitsFirstPicture
        visible: loader.isVideo
        onFrameSizeTold: {
            if (loader.isVideo)
                vxTextureProvider.textureSize = frameSize;
        }
        volume: vxSettings.get("application/volume")
        onVolumeChanged: vxSettings.set("application/volume", volume)
        // The picture changes while its texture keeps its name: the view has to be told.
        onLoaded: {
            if (loadedBackend === "vlc")
                vxTextureProvider.watchFrames(item);
        }
    }

    Vx_ImagePlayer {
        id: imagePlayer

        visible: !loader.isVideo
        shaderEffectSource: imageTexture
        onPlayerStatusChanged: {
            if (playerStatus !== Vx_MediaPlayer.Buffered)
                videoPlayer.playerStatus = Vx_MediaPlayer.NoMedia;
            if (playerStatus !== Vx_MediaPlayer.Loading)
                loader.awaitsFirstPicture = false;
        }
    }

    // Hides the picture and stands for its texture. It draws nothing of its own: the picture's
    // texture is taken as it is.
    ShaderEffectSource {
        id: imageTexture

        width: 1
        height: 1
        visible: false
        sourceItem: imagePlayer
        hideSource: true
        wrapMode: ShaderEffectSource.ClampToEdge
    }
}
