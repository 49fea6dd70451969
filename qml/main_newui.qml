// SPDX-License-Identifier: GPL-3.0-or-later
// The root of the interface.
// Uses vxGlobalObject, vxSettings, vxVideoPlugin, vxView.
import QtQuick 2.15
import Vistrel 1.0

FocusScope {
    id: root

    // The numbers of the message dialog's icons, which is loaded with the first message.
    readonly property int informationIcon: 1
    readonly property int criticalIcon: 3

    function changeState(newState, menuCategory) {
        state = newState;
    }

    function onDisplayMessage(message, icon, advice) {
        console.info(mediaLog, "told the user: " + message);
        if (advice)
            console.info(mediaLog, "advised the user: " + advice.replace("\n", " | "));
        messageDialog.active = true;
        messageDialog.item.show(message, icon === undefined ? informationIcon : icon, advice || "");
        vxGlobalObject.restoreCursor();
    }

    function onKeyPressed(event) {
        vx_menu.onKeyPressed(event);
    }

    width: vxView.startSize().width
    height: vxView.startSize().height
    focus: true
    state: "Video"
    Keys.onPressed: onKeyPressed(event)
    Component.onCompleted: vxView.displayMessage.connect(onDisplayMessage)

    LoggingCategory {
        id: mediaLog

        name: "tavro.media"
        defaultLogLevel: LoggingCategory.Warning
    }

    // A notice, unlike the failures that the media loader tells.
    Connections {
        target: vxVideoPlugin

        function onDisplayMessage(message) {
            root.onDisplayMessage(message);
        }
    }

    Item {
        anchors.fill: parent

        Vx_MediaLoader {
            id: vx_mediaLoader

            // Out of sight, yet painted: some players' textures exist only while they are.
            x: root.width
            onDisplayMessage: root.onDisplayMessage(message, root.criticalIcon, advice)
            onChangeRootState: root.changeState(newState)
        }

        Vx_VideoArea {
            id: vx_videoArea

            anchors.fill: parent
            mediaLoader: vx_mediaLoader
            onOpenRequested: openDialog.show()
            onBackendRequested: root.changeState("Settings")
        }

        Loader {
            id: vx_debugInfo

            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 12
            active: false
            sourceComponent: Vx_DebugInfo {
                mediaPlayer: vx_mediaLoader.mediaPlayer
                view: vx_videoArea.view
            }
        }

        Vx_PlayerImage {
            id: vx_playerImage

            anchors.fill: parent
        }

        Connections {
            target: vxGlobalObject

            function onPassedOver(fileName) {
                vx_playerImage.onShowPlayerNotice(qsTr("Passed over, it cannot be shown: %1").arg(fileName));
            }
        }

        Connections {
            target: vx_videoArea.view

            function onSnapshotSaved(path) {
                vx_playerImage.onShowPlayerNotice(qsTr("Saved as %1").arg(path));
            }

            function onSnapshotFailed(folder, reason) {
                vx_playerImage.onShowPlayerNotice(qsTr("The picture could not be saved in %1: %2").arg(folder).arg(reason));
            }
        }

        Loader {
            id: vx_settingsWindow

            anchors.fill: parent
            active: root.state === "Settings"
            focus: active
            source: "Vx_SettingsWindow.qml"

            Connections {
                target: vx_settingsWindow.item

                function onClosed() {
                    root.changeState("Video");
                }
            }
        }

        Loader {
            id: messageDialog

            active: false
            source: "Vx_MessageDialog.qml"
        }

        Loader {
            id: openDialog

            function show() {
                active = true;
                item.show();
            }

            active: false
            source: "Vx_OpenDialog.qml"
        }

        VxDropArea {
            anchors.fill: parent
            onFilePathListChanged: vxGlobalObject.openFiles(filePathList, true)
        }
    }

    Vx_Menu {
        id: vx_menu

        z: 10
        mediaLoader: vx_mediaLoader
        videoArea: vx_videoArea
        onOpenRequested: openDialog.show()
        onChangeRootState: root.changeState(newState)
        onDebugInfoRequested: vx_debugInfo.active = !vx_debugInfo.active
        onShowPlayerText: vx_playerImage.onShowPlayerText(text)
    }

    states: [
        State {
            name: "Video"
        },
        State {
            name: "Settings"
        }
    ]
}
