// SPDX-License-Identifier: GPL-3.0-or-later
// A button for mouse, touch and keyboard.
import QtQuick 2.15

Rectangle {
    id: button

    property alias text: label.text

    signal clicked()

    implicitWidth: label.implicitWidth + 40
    implicitHeight: label.implicitHeight + 18
    radius: 4
    color: mouse.pressed ? "#3a6ea5" : mouse.containsMouse ? "#5a8ec5" : "#4a7eb5"
    border.width: activeFocus ? 2 : 0
    border.color: "white"
    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Keys.onSpacePressed: clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    Text {
        id: label

        anchors.centerIn: parent
        color: "white"
        font.pixelSize: 16
    }

    MouseArea {
        id: mouse

        anchors.fill: parent
        hoverEnabled: true
        onClicked: button.clicked()
    }
}
