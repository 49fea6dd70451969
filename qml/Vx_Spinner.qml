// SPDX-License-Identifier: GPL-3.0-or-later
// Shows that a medium is on its way.
import QtQuick 2.15

Item {
    id: spinner

    readonly property int dotCount: 12

    width: 150
    height: 150
    Accessible.role: Accessible.Indicator
    Accessible.name: qsTr("Loading")

    RotationAnimator on rotation {
        from: 0
        to: 360
        duration: 1200
        loops: Animation.Infinite
    }

    Repeater {
        model: spinner.dotCount

        Rectangle {
            required property int index
            readonly property real angle: 2 * Math.PI * index / spinner.dotCount

            x: spinner.width / 2 + Math.sin(angle) * 55 - width / 2
            y: spinner.height / 2 - Math.cos(angle) * 55 - height / 2
            width: 14
            height: width
            radius: width / 2
            color: "white"
            opacity: (index + 1) / spinner.dotCount
        }
    }
}
