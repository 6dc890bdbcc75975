import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// A page to go to, in the sidebar.
T.TabButton {
    id: entry

    property string iconName
    property string keys: ""

    implicitHeight: Math.max(36, words.implicitHeight + 12)
    implicitWidth: 200
    Accessible.name: text
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    background: Rectangle {
        radius: Theme.radius
        color: entry.checked ? Theme.selection : entry.hovered ? Theme.hover : "transparent"
        FocusFrame {
            shown: entry.visualFocus
        }
    }
    contentItem: Item {
        Icon {
            x: 12
            anchors.verticalCenter: parent.verticalCenter
            name: entry.iconName
        }
        Words {
            id: words
            anchors.verticalCenter: parent.verticalCenter
            x: 42
            width: parent.width - 50
            text: entry.text
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
    }
    Hint {
        visible: entry.hovered && entry.keys !== ""
        keys: entry.keys
    }
}
