// SPDX-License-Identifier: GPL-3.0-or-later
// What the program is doing: the graphics card, the rates, the road of the frames, the medium.
// Uses vxGlobalObject, vxShaderCodeBuilder, vxView.
import QtQuick 2.15

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

        function degrees(radians) {
            return (radians * 180 / Math.PI).toFixed(1) + "\u00b0";
        }

        anchors.centerIn: parent
        textFormat: Text.PlainText
        color: "white"
        font.pixelSize: 13
        font.family: "monospace"
        text: vxView.gpuInfo
              + qsTr("Window : %1 fps\nPanorama : %2 fps\n").arg(vxView.fps).arg(panel.view.fps)
              + qsTr("Video : %1 fps\nTexture transfer : %2\nTexture pixel format : %3\n")
                .arg(panel.mediaPlayer.fps).arg(panel.mediaPlayer.textureTransfer)
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
