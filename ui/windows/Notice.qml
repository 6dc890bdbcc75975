import QtQuick
import Orvane.Windows

/// One sentence about what has just been done, with a way back where there is one.
Rectangle {
    id: notice

    required property QtObject notices

    implicitWidth: row.implicitWidth + 32
    implicitHeight: Math.max(44, row.implicitHeight + 20)
    radius: Theme.radius
    color: Theme.text
    visible: opacity > 0
    opacity: notices.text === "" ? 0 : 1
    Accessible.role: Accessible.AlertMessage
    Accessible.name: notices.text
    Behavior on opacity {
        NumberAnimation {
            duration: Theme.quick
        }
    }
    Row {
        id: row
        anchors.centerIn: parent
        spacing: 16
        Words {
            anchors.verticalCenter: parent.verticalCenter
            text: notice.notices.text
            color: Theme.window
            width: Math.min(implicitWidth, notice.Window.width - Theme.sidebarWidth - 210)
            wrapMode: Text.Wrap
        }
        PushButton {
            anchors.verticalCenter: parent.verticalCenter
            visible: notice.notices.action !== ""
            text: notice.notices.action
            onClicked: notice.notices.act()
        }
    }
    Shortcut {
        sequences: [StandardKey.Undo]
        enabled: notice.notices.action !== "" && !(notice.Window.activeFocusItem instanceof TextInput) && !(notice.Window.activeFocusItem instanceof TextEdit)
        onActivated: notice.notices.act()
    }
}
