import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// Something that is on or off.
T.CheckBox {
    id: tick

    /// As the user does it.
    function flip() {
        toggle();
        toggled();
    }

    implicitHeight: Math.max(24, words.implicitHeight)
    implicitWidth: 30 + words.implicitWidth
    spacing: 10
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.onPressAction: flip()
    Accessible.onToggleAction: flip()
    Keys.onReturnPressed: flip()
    indicator: Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: 18
        height: 18
        radius: 5
        color: tick.checked ? Theme.accent : Theme.surface
        border.width: tick.checked ? 0 : 1
        border.color: Theme.secondary
        Icon {
            anchors.centerIn: parent
            size: 14
            visible: tick.checked
            name: "check"
            color: Theme.overAccent
        }
        FocusFrame {
            shown: tick.visualFocus
        }
    }
    contentItem: Words {
        id: words
        leftPadding: 28
        text: tick.text
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
}
