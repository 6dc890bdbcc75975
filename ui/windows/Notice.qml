import QtQuick
import Orvane.Windows

/// One sentence about what has just been done, with a way back where there is one.
Rectangle {
    id: notice

    required property QtObject notices

    implicitWidth: row.implicitWidth + 32
    implicitHeight: 44
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
            width: Math.min(implicitWidth, 460)
        }
        PushButton {
            anchors.verticalCenter: parent.verticalCenter
            visible: notice.notices.action !== ""
            text: notice.notices.action
            onClicked: notice.notices.act()
        }
    }
}
