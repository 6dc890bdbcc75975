import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// A setting that is on or off.
T.Switch {
    id: toggle

    property string label

    /// As the user does it.
    function flip() {
        toggle();
        toggled();
    }

    implicitWidth: 40
    implicitHeight: 24
    Accessible.role: Accessible.CheckBox
    Accessible.name: label
    Accessible.onPressAction: flip()
    Accessible.onToggleAction: flip()
    Keys.onReturnPressed: flip()
    indicator: Rectangle {
        width: 40
        height: 24
        radius: 12
        color: toggle.checked ? Theme.accent : Theme.surface
        border.width: toggle.checked ? 0 : 1
        border.color: Theme.secondary
        Rectangle {
            x: toggle.checked ? 19 : 3
            y: 3
            width: 18
            height: 18
            radius: 9
            color: toggle.checked ? Theme.overAccent : Theme.secondary
            Behavior on x {
                NumberAnimation {
                    duration: Theme.quick
                    easing.type: Easing.OutCubic
                }
            }
        }
        FocusFrame {
            radius: 14
            shown: toggle.visualFocus
        }
    }
}
