// SPDX-License-Identifier: GPL-3.0-or-later
// The panorama and the navigation in it by mouse, wheel and touch.
// Uses vxApp, vxGlobalObject, vxSettings, vxTextureProvider, vxView.
import QtQuick 2.15
import "qrc:/VxVideo"
import Vistrel 1.0

Item {
    id: area

    // Something has lasted for the interval.
    component Delay: Timer {
        property bool isDue: false
        property bool elapsed: false

        running: isDue && !elapsed
        onIsDueChanged: elapsed = false
        onTriggered: elapsed = true
    }

    required property QtObject mediaLoader
    readonly property int playerStatus: mediaLoader.mediaPlayer.playerStatus
    readonly property bool isShowing: playerStatus === Vx_MediaPlayer.Loaded
                                      || playerStatus === Vx_MediaPlayer.Stalled
                                      || playerStatus === Vx_MediaPlayer.Buffered
    // Given to a player that has not told of it yet.
    readonly property bool isAwaited: playerStatus === Vx_MediaPlayer.NoMedia
                                      && mediaLoader.mediaSource.toString() !== ""
                                      && mediaLoader.mediaPlayer.errorString === ""
    readonly property bool isBusy: playerStatus === Vx_MediaPlayer.Loading
                                   || playerStatus === Vx_MediaPlayer.Stalled
                                   || playerStatus === Vx_MediaPlayer.Buffering
                                   || playerStatus === Vx_MediaPlayer.EndOfMedia
                                   || vxGlobalObject.opening || isAwaited
    // In one expression: two conditions that change in turn would both fail in between, and the
    // info screen would be made and thrown away while a picture appears.
    readonly property bool isEmpty: !vxGlobalObject.opening
                                    && (playerStatus === Vx_MediaPlayer.UnknownStatus
                                        || playerStatus === Vx_MediaPlayer.InvalidMedia
                                        || (playerStatus === Vx_MediaPlayer.NoMedia && !isAwaited))
    // The view shows something, be it the medium before the one that is on its way.
    property bool hasPicture: false
    property alias view: panorama
    // Radians per pixel.
    readonly property real moveSpeed: 0.005

    signal openRequested()
    signal backendRequested()

    function zoom(direction, factor) {
        vxGlobalObject.setFov(vxGlobalObject.fov + (direction < 0 ? factor : -factor), false);
    }

    function move(x, y) {
        const sign = vxGlobalObject.touchMode ? -1 : 1;
        const dx = sign * (x - mouseArea.lastX);
        const dy = sign * (y - mouseArea.lastY);
        const inertia = vxSettings.get("application/general/cameraInertia");
        if (inertia > 0) {
            const m = 10 * moveSpeed;
            vxGlobalObject.interpolateValue("yawInterpolate",
                                            vxGlobalObject.yawInterpolate + dx * m, inertia);
            vxGlobalObject.interpolateValue("pitchInterpolate",
                                            vxGlobalObject.pitchInterpolate + dy * m, inertia);
        } else {
            vxGlobalObject.yaw += dx * moveSpeed;
            vxGlobalObject.pitch += dy * moveSpeed;
        }
    }

    VistrelView {
        id: panorama

        anchors.fill: parent
        visible: area.isShowing || (area.isBusy && area.hasPicture)
        keepsPicture: !soundNotice.visible
        Component.onCompleted: init(vxApp)
    }

    Connections {
        target: vxTextureProvider

        function onTextureIdChanged() {
            if (vxTextureProvider.textureId > 0)
                area.hasPicture = true;
        }
    }

    Text {
        id: soundNotice

        anchors.centerIn: parent
        width: parent.width - 40
        visible: soundDelay.elapsed
        text: qsTr("There is no picture in this medium: only its sound is played.")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        color: "white"
        font.pixelSize: 18
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    // The first picture may take its time.
    Delay {
        id: soundDelay

        interval: 2000
        isDue: area.isShowing && vxTextureProvider.textureId === 0
               && area.mediaLoader.mediaPlayer.position > 0
    }

    Loader {
        id: infoScreen

        property bool isStarted: false
        // Between one medium and the next the area is empty for a moment that nobody sees.
        property bool isSettled: false
        readonly property bool isEmpty: area.isEmpty

        function settle() {
            isSettled = isEmpty;
            if (isSettled)
                area.hasPicture = false;
        }

        anchors.fill: parent
        onIsEmptyChanged: Qt.callLater(settle)
        // A file of the command line takes over right after the first frame: until then the screen
        // would only flash, and its fonts would keep the file waiting.
        active: isStarted && isSettled && isEmpty
        source: "Vx_InfoScreen.qml"
        onLoaded: {
            item.errorString = Qt.binding(() => area.mediaLoader.mediaPlayer.errorString);
            item.advice = Qt.binding(() => area.mediaLoader.advice);
            item.isVideo = Qt.binding(() => area.mediaLoader.isVideo);
        }

        Connections {
            target: vxView
            enabled: !infoScreen.isStarted

            function onFrameSwapped() {
                infoScreen.isStarted = true;
                infoScreen.settle();
            }
        }

        Connections {
            target: infoScreen.item

            function onOpenRequested() {
                area.openRequested();
            }

            function onBackendRequested() {
                area.backendRequested();
            }
        }
    }

    Loader {
        anchors.centerIn: parent
        active: spinnerDelay.elapsed && area.isBusy
        sourceComponent: Vx_Spinner {
        }
    }

    // What loads at once needs no spinner.
    Delay {
        id: spinnerDelay

        interval: 300
        isDue: area.isBusy
    }

    PinchArea {
        id: pinchArea

        property real startFov: 90

        anchors.fill: parent
        onPinchStarted: startFov = vxGlobalObject.fov
        onPinchUpdated: vxGlobalObject.setFov(startFov / pinch.scale, false)

        MouseArea {
            id: mouseArea

            property real lastX: 0
            property real lastY: 0
            property real originX: 0
            property real originY: 0
            property bool isMoving: false
            // Pixels that a press may tremble without turning the camera.
            readonly property int moveThreshold: 6

            anchors.fill: parent
            onPressed: {
                vxGlobalObject.stopCameraAnimation();
                if (pinchArea.pinch.active)
                    return;
                originX = lastX = mouse.x;
                originY = lastY = mouse.y;
            }
            onPositionChanged: {
                if (pressed && !pinchArea.pinch.active) {
                    if (Math.abs(mouse.x - originX) > moveThreshold
                            || Math.abs(mouse.y - originY) > moveThreshold)
                        isMoving = true;
                    if (isMoving)
                        area.move(mouse.x, mouse.y);
                }
                lastX = mouse.x;
                lastY = mouse.y;
            }
            onExited: isMoving = false
            onDoubleClicked: {
                if (!vxGlobalObject.touchTable)
                    fullScreenDelay.restart();
            }
            onWheel: {
                if (wheel.pixelDelta.y !== 0)
                    area.zoom(wheel.pixelDelta.y, 2);
                else if (wheel.angleDelta.y !== 0)
                    area.zoom(wheel.angleDelta.y, 5);
            }
        }
    }

    // The delay lets the exited event of the double click arrive first.
    Timer {
        id: fullScreenDelay

        interval: 500
        onTriggered: vxView.fullScreenMode(!vxView.fullScreen)
    }
}
