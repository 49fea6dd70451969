// SPDX-License-Identifier: GPL-3.0-or-later
// What the program is doing: the graphics card, the rates, the road of the frames, the medium.
// Uses vxGlobalObject, vxShaderCodeBuilder, vxView.
import QtQuick 2.15
import "qrc:/VxVideo"

Rectangle {
    id: panel

    required property QtObject mediaPlayer
    required property Item view

    width: info.width + 24
    height: info.height + 16
    radius: 4
    color: "#b3000000"

    Text {
        id: info

        // The window's own rate would count the frames in which this text changes.
        readonly property bool moves: panel.view.fps > 0
        readonly property bool plays: panel.mediaPlayer.fps > 0
            && panel.mediaPlayer.playbackState === Vx_MediaPlayer.PlayingState

        function degrees(radians) {
            return (radians * 180 / Math.PI).toFixed(1) + "\u00b0";
        }

        function rate(moves, fps) {
            return moves ? qsTr("%1 fps").arg(fps) : qsTr("at rest");
        }

        anchors.centerIn: parent
        textFormat: Text.PlainText
        color: "white"
        font.pixelSize: 13
        font.family: "monospace"
        text: vxView.gpuInfo
              + qsTr("Window : %1\nPanorama : %2\n")
                .arg(rate(moves, vxView.fps)).arg(rate(moves, panel.view.fps))
              + qsTr("Video : %1\nTexture transfer : %2\nTexture pixel format : %3\n")
                .arg(rate(plays, panel.mediaPlayer.fps)).arg(panel.mediaPlayer.textureTransfer)
                .arg(panel.mediaPlayer.texturePixelFormat)
              + qsTr("Yaw : %1\nPitch : %2\nRoll : %3\nField of view : %4\u00b0\n")
                .arg(degrees(vxGlobalObject.yaw)).arg(degrees(vxGlobalObject.pitch))
                .arg(degrees(vxGlobalObject.roll)).arg(vxGlobalObject.fov.toFixed(1))
              + (panel.mediaPlayer.logMessage === "" ? vxGlobalObject.videoLogMessage
                                                     : panel.mediaPlayer.logMessage)
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
