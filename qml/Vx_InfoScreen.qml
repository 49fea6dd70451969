// SPDX-License-Identifier: GPL-3.0-or-later
// What stands in the window while nothing plays: how to open a medium, and what went wrong.
// Uses vxGlobalObject, vxVideoPlugin, vxView.
import QtQuick 2.15

Item {
    id: screen

    property string errorString: ""
    // Below it: what helps.
    property string advice: ""
    // Another back end plays no other pictures.
    property bool isVideo: false
    readonly property bool hasBackendChoice: vxVideoPlugin.pluginsList().length > 1

    signal openRequested()
    signal backendRequested()

    Column {
        anchors.centerIn: parent
        width: parent.width - 40
        spacing: 14

        Image {
            anchors.horizontalCenter: parent.horizontalCenter
            source: "qrc:/images/tavro-vr-player.svg"
            sourceSize: Qt.size(128, 128)
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: vxGlobalObject.getSoftwareName()
            color: "white"
            font.pixelSize: 28
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: qsTr("Version ") + vxView.version()
            color: "#aaaaaa"
            font.pixelSize: 13
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: qsTr("Drag & Drop your spherical videos here")
            textFormat: Text.PlainText
            color: "white"
            font.pixelSize: 18
        }

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: qsTr("- or -")
            color: "#aaaaaa"
            font.pixelSize: 15
        }

        Vx_PushButton {
            anchors.horizontalCenter: parent.horizontalCenter
            text: qsTr("Select files")
            onClicked: screen.openRequested()
        }

        Text {
            width: parent.width
            visible: screen.errorString !== ""
            text: screen.errorString
            // The text may quote a file's name; only our own links are meant as such.
            textFormat: Text.StyledText
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            color: "#ff5555"
            font.pixelSize: 15
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }

        Text {
            width: parent.width
            visible: screen.errorString !== "" && text !== ""
            text: screen.advice
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            color: "white"
            font.pixelSize: 15
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        Vx_PushButton {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: screen.errorString !== "" && screen.isVideo && screen.hasBackendChoice
            text: qsTr("change video backend")
            onClicked: screen.backendRequested()
        }

        Vx_PushButton {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: screen.errorString !== "" && vxGlobalObject.playListIndex > -1
            text: qsTr("load next media")
            onClicked: vxGlobalObject.playListSetNext(true)
        }
    }
}
