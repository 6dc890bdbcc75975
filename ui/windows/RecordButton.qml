import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The one large button that starts and ends a recording.
T.AbstractButton {
    id: button

    property bool isRecording: false

    implicitWidth: 120
    implicitHeight: implicitWidth
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.Button
    Accessible.name: isRecording ? Texts.of("Завершить запись") : Texts.of("Начать запись")
    Accessible.onPressAction: if (enabled) clicked()
    Keys.onReturnPressed: clicked()
    background: Rectangle {
        radius: width / 2
        color: Theme.soft
        border.width: button.visualFocus ? 2 : 0
        border.color: Theme.accent
    }
    contentItem: Item {
        Rectangle {
            anchors.centerIn: parent
            width: parent.width - 24
            height: width
            radius: width / 2
            color: button.down ? Qt.darker(Theme.accent, 1.15) : button.hovered ? Qt.darker(Theme.accent, 1.06) : Theme.accent
        }
        Rectangle {
            anchors.centerIn: parent
            visible: button.isRecording
            width: 30
            height: 30
            radius: 6
            color: Theme.overAccent
        }
        Icon {
            anchors.centerIn: parent
            visible: !button.isRecording
            size: 40
            name: "microphone"
            color: Theme.overAccent
        }
    }
    Hint {
        visible: button.hovered
        text: button.Accessible.name
    }
}
