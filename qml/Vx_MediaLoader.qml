// SPDX-License-Identifier: GPL-3.0-or-later
// Gives each medium to the player that can show it and hands that player's texture to the view.
// Uses vxGlobalObject, vxShaderCodeBuilder, vxTextureProvider, vxView.
import QtQuick 2.15

Item {
    id: loader

    property QtObject mediaPlayer: imagePlayer
    readonly property url mediaSource: mediaPlayer.mediaSource
    readonly property var fileMetadata: mediaPlayer.fileMetadata

    signal displayMessage(string message)
    signal changeRootState(string newState)

    function processFileSource(fileSource, clearPlaylist, error, dragAndDrop) {
        mediaPlayer.mediaSource = "";
        mediaPlayer.errorString = "";
        vxView.updateTitle(fileSource);
        if (clearPlaylist)
            vxGlobalObject.clearPlayList();

        let url = fileSource;
        if (error === "") {
            url = vxGlobalObject.checkFilePath(fileSource);
            if (!vxGlobalObject.isValidFilePath(url))
                error = qsTr("Cannot open the file") + " '" + url + "'.";
            else if (url.toString() !== "" && !vxGlobalObject.isImageFile(url))
                error = qsTr("The file format is not supported.");
            vxView.updateTitle(url);
        }

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
            mediaPlayer.errorString = error;
            displayMessage(error);
        }
        if (dragAndDrop)
            changeRootState("Video");
    }

    function play() {
        mediaPlayer.play();
    }

    function pause() {
        mediaPlayer.pause();
    }

    function playPause() {
        if (mediaPlayer.playbackState === Vx_PlayerState.PlayingState)
            pause();
        else
            play();
    }

    function stop() {
        processFileSource("", true, "", false);
        mediaPlayer.stop();
    }

    function destroyVideoPlayer() {
        mediaPlayer = imagePlayer;
    }

    onMediaPlayerChanged: watchPlayer()
    Component.onCompleted: {
        vxGlobalObject.setMediaLoader(loader);
        watchPlayer();
    }

    function watchPlayer() {
        vxTextureProvider.setShaderEffectSource(mediaPlayer.shaderEffectSource, true);
        vxShaderCodeBuilder.invertedColors = false;
    }

    Connections {
        target: loader.mediaPlayer

        function onPlayerStatusChanged() {
            if (loader.mediaPlayer.playerStatus !== Vx_PlayerState.InvalidMedia)
                return;
            const message = loader.mediaPlayer.errorString;
            loader.mediaPlayer.mediaSource = "";
            loader.displayMessage(message);
        }
    }

    Connections {
        target: vxGlobalObject

        function onEndOfPlaylistReached() {
            loader.stop();
        }
    }

    Vx_ImagePlayer {
        id: imagePlayer

        shaderEffectSource: imageTexture
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
