import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// How far something is, from 0 to 1.
T.ProgressBar {
    id: bar

    implicitWidth: 200
    implicitHeight: 4
    Accessible.role: Accessible.ProgressBar
    background: Rectangle {
        radius: 2
        color: Theme.line
    }
    contentItem: Item {
        Rectangle {
            width: bar.visualPosition * parent.width
            height: parent.height
            radius: 2
            color: Theme.accent
            Behavior on width {
                NumberAnimation {
                    duration: Theme.quick
                    easing.type: Easing.OutCubic
                }
            }
        }
    }
}
