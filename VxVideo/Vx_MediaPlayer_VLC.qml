// SPDX-License-Identifier: GPL-3.0-or-later
// libvlc behind the player. Uses vxVideoPlugin.
import QtQuick 2.12
import VLCQt 1.0

VlcVideoPlayer {
    id: root

    // The loader whose properties show this item's and are followed by it.
    property Item player: null

    // By state: playback state and status.
    readonly property var stateTable: ({
        [VlcVideoPlayer.Idle]: [Vx_MediaPlayer.StoppedState, Vx_MediaPlayer.NoMedia],
        [VlcVideoPlayer.Opening]: [Vx_MediaPlayer.StoppedState, Vx_MediaPlayer.Loading],
        [VlcVideoPlayer.Buffering]: [Vx_MediaPlayer.StoppedState, Vx_MediaPlayer.Buffering],
        [VlcVideoPlayer.Playing]: [Vx_MediaPlayer.PlayingState, Vx_MediaPlayer.Buffered],
        [VlcVideoPlayer.Paused]: [Vx_MediaPlayer.PausedState, Vx_MediaPlayer.Buffered],
        [VlcVideoPlayer.Stopped]: [Vx_MediaPlayer.StoppedState, Vx_MediaPlayer.NoMedia],
        [VlcVideoPlayer.Ended]: [Vx_MediaPlayer.StoppedState, Vx_MediaPlayer.EndOfMedia],
        [VlcVideoPlayer.Error]: [Vx_MediaPlayer.StoppedState, Vx_MediaPlayer.InvalidMedia]
    })

    // libvlc rarely says why; for a stream the protocol or the server is the likely reason.
    function describeError(errorString) {
        var url = player.mediaSource.toString();
        var scheme = url.substring(0, url.indexOf(":"));
        if (scheme === "" || scheme === "file" || scheme === "qrc")
            return errorString;
        return qsTr("%1: the stream %2 does not answer, or this system's libvlc cannot play %3.")
            .arg(errorString).arg(url).arg(scheme);
    }

    function reopen() {
        if (player.mediaSource.toString() !== "")
            restart(true);
    }

    nativeSize: player.nativeSize
    yaw: player.yaw
    pitch: player.pitch
    roll: player.roll
    fileMetadata: player.fileMetadata
    volume: player.volume

    // Without an audio output the volume is negative; and libvlc rounds it to percents.
    onVolumeChanged: {
        if (volume >= 0 && Math.abs(volume - player.volume) >= 0.02)
            player.volume = volume;
    }
    onNativeSizeChanged: player.nativeSize = nativeSize
    onTextureIdChanged: player.textureId = textureId
    onFpsChanged: player.fps = fps
    onTextureTransferChanged: player.textureTransfer = textureTransfer
    onTexturePixelFormatChanged: player.texturePixelFormat = texturePixelFormat
    onFrameSizeTold: player.frameSizeTold(size)
    onDurationChanged: player.duration = duration
    onPositionChanged: player.position = position
    onErrorStringChanged: player.errorString = describeError(errorString)
    onVlcStateChanged: {
        player.playbackState = stateTable[vlcState][0];
        player.playerStatus = stateTable[vlcState][1];
    }

    Connections {
        target: root.player

        function onMediaSourceChanged() {
            root.player.errorString = "";
            root.player.duration = 0;
            root.player.position = 0;
            if (root.player.mediaSource.toString() === "")
                root.stop();
            else
                root.openFile(root.player.mediaSource);
        }
    }

    Connections {
        target: vxVideoPlugin

        function onVlcHwDecodingChanged() {
            root.reopen();
        }

        function onVlcShaderColorConversionChanged() {
            root.reopen();
        }

        function onVlcAudioDelayChanged() {
            root.updateAudioDelay();
        }
    }

    Component.onCompleted: {
        if (player.mediaSource.toString() !== "")
            openFile(player.mediaSource);
    }
}
