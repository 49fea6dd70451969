// SPDX-License-Identifier: GPL-3.0-or-later
// Shows a still image through the interface of a media player.
// Uses vxGlobalObject, vxTextureProvider, vxView.
import QtQuick 2.15
import "qrc:/VxVideo"
import QtQuick.Window 2.15

Image {
    id: player

    property int playbackState: Vx_MediaPlayer.StoppedState
    property int playerStatus: Vx_MediaPlayer.NoMedia
    property int position: 0
    property int duration: 0
    property real volume: 0
    property string errorString: ""
    property string logMessage: ""
    property url mediaSource: ""
    property Item shaderEffectSource: null
    // Its texture reaches the view as the item above.
    readonly property int textureId: 0
    property int fps: 0
    property string textureTransfer: ""
    property string texturePixelFormat: ""
    property var fileMetadata: ({})

    readonly property string loadError: qsTr("An error occurred while loading the image")
    readonly property bool isVector: /\.svgz?$/i.test(mediaSource)

    function play() {
        if (playerStatus !== Vx_MediaPlayer.Buffered)
            return;
        if (playbackState === Vx_MediaPlayer.PausedState)
            vxGlobalObject.resumeTimerNextImage();
        else
            vxGlobalObject.startTimerNextImage();
        playbackState = Vx_MediaPlayer.PlayingState;
    }

    function pause() {
        if (playbackState !== Vx_MediaPlayer.PlayingState)
            return;
        vxGlobalObject.pauseTimerNextImage();
        playbackState = Vx_MediaPlayer.PausedState;
    }

    function stop() {
        mediaSource = "";
    }

    function seek(offset) {
    }

    function seekJump(delta) {
    }

    function fail() {
        errorString = loadError;
        playerStatus = Vx_MediaPlayer.InvalidMedia;
    }

    asynchronous: true
    autoTransform: true
    cache: false
    smooth: true
    // A larger picture is decoded at the size that the GPU takes. A vector image has no pixels of
    // its own: its height follows from its width.
    sourceSize: {
        const ratio = Screen.devicePixelRatio;
        const width = vxView.maxTextureSize.width / ratio;
        return isVector ? Qt.size(Math.min(width, 8192), 0)
                        : Qt.size(width, vxView.maxTextureSize.height / ratio);
    }

    onMediaSourceChanged: {
        source = "";
        if (mediaSource.toString() === "") {
            playbackState = Vx_MediaPlayer.StoppedState;
            playerStatus = Vx_MediaPlayer.NoMedia;
            return;
        }
        errorString = "";
        playerStatus = Vx_MediaPlayer.Loading;
        if (vxGlobalObject.isFile(mediaSource))
            vxGlobalObject.inspectImage(mediaSource);
        else
            source = mediaSource;
    }

    onStatusChanged: {
        switch (status) {
        case Image.Error:
            fail();
            break;
        case Image.Null:
            // While a picture is looked at before it is loaded, it is loading all the same.
            playerStatus = mediaSource.toString() === "" ? Vx_MediaPlayer.NoMedia
                                                         : Vx_MediaPlayer.Loading;
            break;
        case Image.Loading:
            playerStatus = Vx_MediaPlayer.Loading;
            break;
        default:
            playerStatus = Vx_MediaPlayer.Buffered;
            break;
        }
    }

    onPlayerStatusChanged: {
        if (playerStatus === Vx_MediaPlayer.Buffered) {
            playbackState = Vx_MediaPlayer.PlayingState;
            vxGlobalObject.startTimerNextImage();
        } else {
            vxTextureProvider.textureId = 0;
        }
    }

    Connections {
        target: vxGlobalObject

        function onImageInspected(url, usable) {
            if (url.toString() !== player.mediaSource.toString())
                return;
            if (!usable)
                player.fail();
            else if (player.source.toString() === "")
                player.source = vxGlobalObject.pictureSource(url);
        }

        function onImageCut(url) {
            if (url.toString() === player.mediaSource.toString())
                player.logMessage += qsTr("The file is incomplete: the picture is shown as far as it goes.\n");
        }
    }
}
