// SPDX-License-Identifier: GPL-3.0-or-later
// Texts that show over the picture for a moment.
import QtQuick 2.15

Item {
    id: overlays

    function onShowPlayerText(text) {
        textOverlay.active = true;
        textOverlay.item.show(text, 500);
    }

    // A text that must be read.
    function onShowPlayerNotice(text) {
        textOverlay.active = true;
        textOverlay.item.show(text, 4000);
    }

    // Loaded with the first text: the first frame needs no fonts.
    Loader {
        id: textOverlay

        anchors.centerIn: parent
        active: false
        sourceComponent: Rectangle {
            id: panel

            // milliseconds: until it fades.
            function show(text, milliseconds) {
                label.text = text;
                opacity = 1;
                rest.duration = milliseconds;
                fade.restart();
            }

            width: label.width + 40
            height: label.height + 24
            radius: 8
            color: "#b3000000"

            Text {
                id: label

                anchors.centerIn: parent
                width: Math.min(implicitWidth, overlays.width - 80)
                textFormat: Text.PlainText
                wrapMode: Text.WrapAnywhere
                color: "white"
                font.pixelSize: 20
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            SequentialAnimation {
                id: fade

                PauseAnimation {
                    id: rest
                }

                NumberAnimation {
                    target: panel
                    property: "opacity"
                    to: 0
                    duration: 1000
                }
            }
        }
    }
}
