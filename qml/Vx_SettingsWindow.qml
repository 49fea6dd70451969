// SPDX-License-Identifier: GPL-3.0-or-later
// The preferences. So far their page on videos.
// Uses vxGlobalObject, vxVideoPlugin.
import QtQuick 2.15

Rectangle {
    id: settingsWindow

    readonly property int delayStep: 10

    signal closed()

    color: "#e6222222"
    focus: true
    Keys.onEscapePressed: closed()

    MouseArea {
        // What lies below must not turn with the wheel or move with a drag.
        anchors.fill: parent
        onWheel: wheel.accepted = true
    }

    Flickable {
        anchors.fill: parent
        anchors.margins: 24
        contentHeight: page.height
        clip: true

        Column {
            id: page

            width: Math.min(parent.width, 760)
            spacing: 14

            Text {
                text: qsTr("Video")
                color: "white"
                font.pixelSize: 24
            }

            Text {
                text: qsTr("Video backend")
                color: "#aaaaaa"
                font.pixelSize: 15
            }

            Repeater {
                model: vxVideoPlugin.pluginsList()

                Vx_CheckBox {
                    required property var modelData

                    exclusive: true
                    text: modelData[1]
                    checked: vxVideoPlugin.currentPlugin === modelData[0]
                    onToggled: vxVideoPlugin.currentPlugin = modelData[0]
                }
            }

            Text {
                text: qsTr("Playback with VLC")
                color: "#aaaaaa"
                font.pixelSize: 15
            }

            Vx_CheckBox {
                text: qsTr("Hardware decoding")
                checked: vxVideoPlugin.vlcHwDecoding
                onToggled: vxVideoPlugin.vlcHwDecoding = !vxVideoPlugin.vlcHwDecoding
            }

            Vx_CheckBox {
                text: qsTr("Convert colors on the graphics card: costs VLC little more than half of the work. Without a graphics card leave it off.")
                checked: vxVideoPlugin.vlcShaderColorConversion
                onToggled: vxVideoPlugin.vlcShaderColorConversion
                           = !vxVideoPlugin.vlcShaderColorConversion
            }

            Row {
                spacing: 10

                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: qsTr("Sound comes %1 ms after the picture").arg(vxVideoPlugin.vlcAudioDelay)
                    color: "white"
                    font.pixelSize: 15
                }

                Vx_PushButton {
                    text: "-"
                    Accessible.name: qsTr("Sound earlier")
                    onClicked: vxVideoPlugin.vlcAudioDelay -= settingsWindow.delayStep
                }

                Vx_PushButton {
                    text: "+"
                    Accessible.name: qsTr("Sound later")
                    onClicked: vxVideoPlugin.vlcAudioDelay += settingsWindow.delayStep
                }
            }

            Repeater {
                model: [
                    {what: "instance", label: qsTr("Custom arguments of VLC, separated by commas; used with -c")},
                    {what: "media", label: qsTr("Custom options of each medium, separated by commas; used with -c")}
                ]

                Column {
                    id: custom

                    required property var modelData

                    width: page.width
                    spacing: 4

                    Text {
                        text: custom.modelData.label
                        color: "white"
                        font.pixelSize: 15
                    }

                    Rectangle {
                        width: parent.width
                        height: input.height + 12
                        color: "#333333"
                        border.color: input.activeFocus ? "white" : "#666666"

                        TextInput {
                            id: input

                            anchors.verticalCenter: parent.verticalCenter
                            x: 8
                            width: parent.width - 16
                            clip: true
                            color: "white"
                            selectByMouse: true
                            activeFocusOnTab: true
                            font.pixelSize: 14
                            text: vxGlobalObject.getVlcCmdInfos(true, custom.modelData.what)
                            onEditingFinished: vxGlobalObject.setVlcCustomCmd(custom.modelData.what, text)
                            Accessible.role: Accessible.EditableText
                            Accessible.name: custom.modelData.label
                        }
                    }
                }
            }

            Row {
                spacing: 10

                Vx_PushButton {
                    text: qsTr("Reset")
                    onClicked: vxVideoPlugin.resetDefaultValues("vlc")
                }

                Vx_PushButton {
                    text: qsTr("Close")
                    onClicked: settingsWindow.closed()
                }
            }
        }
    }
}
