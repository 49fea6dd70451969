// SPDX-License-Identifier: GPL-3.0-or-later
// Qt's multimedia behind the player. Uses vxGlobalObject.
import QtQuick 2.12
import QtMultimedia 5.12

Item {
    id: root

    // The loader whose properties show this item's and are followed by it.
    property Item player: null

    // Back ends that do not play again what has ended.
    readonly property var reopeningBackends: ["avf", "qt7", "ds"]

    function pause() {
        mediaPlayer.pause();
    }

    function play() {
        mediaPlayer.play();
    }

    function stop() {
        mediaPlayer.stop();
    }

    function seek(offset) {
        mediaPlayer.seek(offset);
    }

    function restart() {
        if (reopeningBackends.indexOf(player.loadedBackend) >= 0) {
            var source = player.mediaSource;
            player.mediaSource = "";
            player.mediaSource = source;
        } else {
            mediaPlayer.seek(0);
        }
        mediaPlayer.play();
    }

    function errorText() {
        if (mediaPlayer.errorString !== "")
            return mediaPlayer.errorString;
        switch (mediaPlayer.error) {
        case MediaPlayer.NoError:
            return "";
        case MediaPlayer.ResourceError:
            return qsTr("Mediaplayer can't find a resource. Codec may be missing.");
        default:
            return qsTr("Unknow mediaplayer error (") + mediaPlayer.error + ")";
        }
    }

    implicitWidth: output.width
    implicitHeight: output.height

    MediaPlayer {
        id: mediaPlayer

        autoPlay: true
        source: root.player.mediaSource
        volume: root.player.volume

        onVolumeChanged: {
            if (Math.abs(volume - root.player.volume) >= 0.01)
                root.player.volume = volume;
        }
        onDurationChanged: root.player.duration = duration
        onPositionChanged: root.player.position = position
        onPlaybackStateChanged: root.player.playbackState = playbackState
        onStatusChanged: root.player.playerStatus = status
        onErrorChanged: root.player.errorString = root.errorText()
        onSourceChanged: root.player.errorString = root.errorText()
    }

    VideoOutput {
        id: output

        width: root.player.nativeSize ? Math.max(sourceRect.width, 1) : root.player.width
        height: root.player.nativeSize ? Math.max(sourceRect.height, 1) : root.player.height
        source: mediaPlayer
        fillMode: root.player.nativeSize ? VideoOutput.PreserveAspectFit : VideoOutput.Stretch
    }

    // Outside the view: only its texture is wanted.
    ShaderEffectSource {
        id: texture

        x: -1
        width: 1
        height: 1
        opacity: 1
        sourceItem: output
        hideSource: false
        wrapMode: ShaderEffectSource.ClampToEdge
    }

    Component.onCompleted: {
        player.shaderEffectSource = texture;
        vxGlobalObject.hackQmlMediaPlayer(mediaPlayer);
    }
}
