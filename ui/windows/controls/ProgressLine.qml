import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// How far something is, from 0 to 1. A bit moves along it as long as that is not known.
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
        clip: true
        Rectangle {
            id: bit
            visible: bar.value <= 0
            width: parent.width / 6
            height: parent.height
            radius: 2
            color: Theme.accent
            XAnimator on x {
                running: bit.visible && bar.visible && Theme.animated
                loops: Animation.Infinite
                from: -bit.width
                to: bar.width
                duration: 1800
            }
        }
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
