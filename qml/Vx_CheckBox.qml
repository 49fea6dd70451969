// SPDX-License-Identifier: GPL-3.0-or-later
// A choice for mouse, touch and keyboard: on or off, or one of several.
import QtQuick 2.15

Item {
    id: box

    property alias text: label.text
    property bool checked: false
    property bool exclusive: false

    signal toggled()

    implicitWidth: row.width
    implicitHeight: row.height
    activeFocusOnTab: true
    Accessible.role: exclusive ? Accessible.RadioButton : Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: toggled()
    Accessible.onPressAction: toggled()
    Keys.onSpacePressed: toggled()

    Row {
        id: row

        spacing: 10

        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 18
            height: 18
            radius: box.exclusive ? 9 : 3
            color: "transparent"
            border.color: box.activeFocus ? "white" : "#aaaaaa"
            border.width: box.activeFocus ? 2 : 1

            Rectangle {
                anchors.centerIn: parent
                visible: box.checked
                width: 10
                height: 10
                radius: box.exclusive ? 5 : 2
                color: "#4a9ee5"
            }
        }

        Text {
            id: label

            width: Math.min(implicitWidth, box.parent ? box.parent.width - 40 : implicitWidth)
            wrapMode: Text.Wrap
            textFormat: Text.PlainText
            color: "white"
            font.pixelSize: 15
        }
    }

    MouseArea {
        anchors.fill: parent
        onClicked: {
            box.forceActiveFocus();
            box.toggled();
        }
    }
}
