import QtQuick
import Orvane.Windows

/// The last levels of the microphone, the newest at the right.
Row {
    id: wave

    property var levels: []

    spacing: 4
    layoutDirection: Qt.RightToLeft
    Accessible.ignored: true
    Repeater {
        model: 48
        delegate: Rectangle {
            required property int index
            readonly property real level: wave.levels[wave.levels.length - 1 - index] ?? 0

            anchors.verticalCenter: wave.verticalCenter
            width: 4
            height: Math.max(4, level * wave.height)
            radius: 2
            color: Theme.accent
            opacity: 1 - 0.7 * index / 48
        }
    }
}
