import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// One entry of a ContextMenu.
T.MenuItem {
    id: entry

    property string keys: ""
    property string iconName: ""
    property string help: ""

    implicitWidth: 256
    implicitHeight: visible ? 32 : 0
    opacity: enabled ? 1 : 0.45
    Accessible.name: text
    Accessible.description: help
    Accessible.onPressAction: if (enabled) clicked()
    background: Rectangle {
        radius: 6
        color: entry.highlighted ? Theme.selection : "transparent"
    }
    Hint {
        visible: entry.hovered && entry.help !== ""
        text: entry.help
    }
    contentItem: Item {
        Icon {
            id: picture
            x: 8
            anchors.verticalCenter: parent.verticalCenter
            size: 16
            visible: entry.iconName !== ""
            name: entry.iconName
        }
        Words {
            anchors.fill: parent
            anchors.leftMargin: picture.visible ? 34 : 10
            anchors.rightMargin: 10
            role: Words.Button
            text: entry.text
            Accessible.ignored: true
        }
        Words {
            anchors.right: parent.right
            anchors.rightMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            role: Words.Small
            text: entry.keys
            Accessible.ignored: true
        }
    }
}
