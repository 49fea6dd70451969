// SPDX-License-Identifier: GPL-3.0-or-later
// The shortcuts and keys of the program.
// Uses vxGlobalObject, vxSettings, vxShaderCodeBuilder, vxView.
import QtQuick 2.15
import "qrc:/VxVideo"
import Vistrel 1.0

Item {
    id: menu

    required property QtObject mediaLoader
    required property Item videoArea
    readonly property bool hasMedia: mediaLoader.mediaPlayer.playerStatus !== Vx_MediaPlayer.NoMedia
    readonly property bool hasPlaylist: vxGlobalObject.playListIndex > -1

    signal openRequested()
    signal changeRootState(string newState)
    signal debugInfoRequested()
    signal showPlayerText(string text)

    function onKeyPressed(event) {
        switch (event.key) {
        case Qt.Key_Escape:
            vxView.fullScreenMode(false);
            break;
        case Qt.Key_Return:
        case Qt.Key_Enter:
            toggleLittlePlanet();
            break;
        default:
            return;
        }
        event.accepted = true;
    }

    function seekJump(delta) {
        mediaLoader.seekJump(delta);
        showPlayerText(formatTime(mediaLoader.mediaPlayer.position));
    }

    // mm:ss, with hh: in front when an hour is reached.
    function formatTime(milliseconds) {
        const seconds = Math.round(milliseconds / 1000);
        const parts = [Math.floor(seconds / 60) % 60, seconds % 60];
        if (seconds >= 3600)
            parts.unshift(Math.floor(seconds / 3600));
        return parts.map(part => part.toString().padStart(2, "0")).join(":");
    }

    function toggleLittlePlanet() {
        const duration = 1000;
        if (vxSettings.get("instance/output/projection") !== VxShaderCodeBuilder.TAVRO)
            return;
        const open = vxGlobalObject.fov < 180;
        vxGlobalObject.interpolateValue("fov", open ? 250 : 90, duration);
        vxGlobalObject.interpolateValue("pitch", open ? Math.PI / 2 : 0, duration);
    }

    function moveCamera(property, direction) {
        const step = vxSettings.get("instance/general/cameraMoveSteps") * Math.PI / 180;
        vxGlobalObject.interpolateValue(property, direction * step,
                                        vxSettings.get("instance/general/cameraInertia"), true);
    }

    Shortcut {
        sequence: "Ctrl+O"
        onActivated: menu.openRequested()
    }

    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: Qt.quit()
    }

    Shortcut {
        sequence: "Space"
        enabled: menu.hasMedia
        onActivated: menu.mediaLoader.playPause()
    }

    Shortcut {
        sequence: "Ctrl+W"
        enabled: menu.hasMedia || vxGlobalObject.opening
        onActivated: menu.mediaLoader.stop()
    }

    Shortcut {
        sequence: "Ctrl+,"
        onActivated: menu.changeRootState("Settings")
    }

    Shortcut {
        sequence: "H"
        onActivated: menu.debugInfoRequested()
    }

    Shortcut {
        sequence: "Ctrl+Right"
        enabled: menu.hasMedia
        onActivated: menu.seekJump(1000)
    }

    Shortcut {
        sequence: "Ctrl+Left"
        enabled: menu.hasMedia
        onActivated: menu.seekJump(-1000)
    }

    Shortcut {
        sequence: "Ctrl+Alt+Right"
        enabled: menu.hasMedia
        onActivated: menu.seekJump(menu.mediaLoader.mediaPlayer.duration / 20)
    }

    Shortcut {
        sequence: "Ctrl+Alt+Left"
        enabled: menu.hasMedia
        onActivated: menu.seekJump(-menu.mediaLoader.mediaPlayer.duration / 20)
    }

    Shortcut {
        sequence: "Ctrl+Up"
        onActivated: menu.mediaLoader.volumeUp()
    }

    Shortcut {
        sequence: "Ctrl+Down"
        onActivated: menu.mediaLoader.volumeDown()
    }

    Shortcut {
        sequence: "Alt+Left"
        enabled: menu.hasPlaylist
        onActivated: vxGlobalObject.playListSetPrevious()
    }

    Shortcut {
        sequence: "Alt+Right"
        enabled: menu.hasPlaylist
        onActivated: vxGlobalObject.playListSetNext(true)
    }

    Repeater {
        model: [
            {keys: "Ctrl+Shift+R", key: "instance/general/loopMode", value: 0},
            {keys: "Ctrl+R", key: "instance/general/loopMode", value: 1},
            {keys: "Ctrl+Alt+R", key: "instance/general/loopMode", value: 2},
            {keys: "Alt+1", key: "instance/input/projection", value: VxShaderCodeBuilder.AUTO},
            {keys: "Alt+2", key: "instance/input/projection",
             value: VxShaderCodeBuilder.EQUIRECTANGULAR},
            {keys: "Alt+3", key: "instance/input/projection", value: VxShaderCodeBuilder.CUBEMAP},
            {keys: "Alt+4", key: "instance/input/projection", value: VxShaderCodeBuilder.STANDARD},
            {keys: "Ctrl+1", key: "instance/output/projection", value: VxShaderCodeBuilder.TAVRO},
            {keys: "Ctrl+2", key: "instance/output/projection",
             value: VxShaderCodeBuilder.RECTILINEAR},
            {keys: "Ctrl+3", key: "instance/output/projection",
             value: VxShaderCodeBuilder.LITTLE_PLANET},
            {keys: "Ctrl+4", key: "instance/output/projection", value: VxShaderCodeBuilder.FISHEYE}
        ]

        Item {
            id: entry

            required property var modelData

            Shortcut {
                sequence: entry.modelData.keys
                onActivated: vxSettings.set(entry.modelData.key, entry.modelData.value)
            }
        }
    }

    Shortcut {
        sequence: "P"
        enabled: vxShaderCodeBuilder.projectionSource !== VxShaderCodeBuilder.STANDARD
        onActivated: vxShaderCodeBuilder.setNextProjection()
    }

    Shortcut {
        sequence: "Z"
        onActivated: vxGlobalObject.resetYawPitchRollFov()
    }

    Shortcut {
        sequence: "Left"
        onActivated: menu.moveCamera("yawInterpolate", -1)
    }

    Shortcut {
        sequence: "Right"
        onActivated: menu.moveCamera("yawInterpolate", 1)
    }

    Shortcut {
        sequence: "Up"
        onActivated: menu.moveCamera("pitchInterpolate", -1)
    }

    Shortcut {
        sequence: "Down"
        onActivated: menu.moveCamera("pitchInterpolate", 1)
    }

    Shortcut {
        sequence: "+"
        onActivated: menu.videoArea.zoom(1, 3)
    }

    Shortcut {
        sequence: "-"
        onActivated: menu.videoArea.zoom(-1, 3)
    }

    Shortcut {
        sequence: "E"
        enabled: vxShaderCodeBuilder.stereoMode !== VxShaderCodeBuilder.STEREO_2D
        onActivated: vxShaderCodeBuilder.switchEyeStereoscopy()
    }

    Shortcut {
        sequence: "F"
        onActivated: vxView.fullScreenMode(!vxView.fullScreen)
    }

    Shortcut {
        sequence: "Ctrl+P"
        enabled: menu.hasMedia
        onActivated: menu.videoArea.view.printScreenRequested = 1
    }

    Shortcut {
        sequence: "Ctrl+Alt+P"
        enabled: menu.hasMedia
        onActivated: menu.videoArea.view.printScreenRequested = 2
    }
}
