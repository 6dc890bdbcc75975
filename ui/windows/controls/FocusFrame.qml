import QtQuick
import Orvane.Windows

/// Shows which control the keyboard is at. Fills its parent.
Rectangle {
    property bool shown: parent ? parent.visualFocus === true : false

    anchors.fill: parent
    anchors.margins: -2
    visible: shown
    color: "transparent"
    radius: Theme.radius + 2
    border.width: 2
    border.color: Theme.accent
    Accessible.ignored: true
}
