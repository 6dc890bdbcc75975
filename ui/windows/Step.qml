import QtQuick
import Orvane.Windows

/// One step of several: its number, or a tick once it is done.
Card {
    id: step

    property int number
    property string title
    property string text
    property bool isDone: false
    default property alias content: column.data

    width: parent ? parent.width : 0
    implicitHeight: column.implicitHeight + 32
    Accessible.role: Accessible.Grouping
    Accessible.name: title
    Rectangle {
        x: 16
        y: 16
        width: 28
        height: 28
        radius: 14
        color: step.isDone ? Theme.accent : Theme.selection
        Words {
            anchors.centerIn: parent
            visible: !step.isDone
            text: step.number
        }
        Icon {
            anchors.centerIn: parent
            visible: step.isDone
            size: 16
            name: "check"
            color: Theme.overAccent
        }
    }
    Column {
        id: column
        x: 60
        y: 16
        width: parent.width - 76
        spacing: 10
        Words {
            width: parent.width
            height: 28
            text: step.title
            font.weight: Font.Medium
        }
        Words {
            width: parent.width
            color: Theme.secondary
            text: step.text
            wrapMode: Text.Wrap
            visible: text !== ""
        }
    }
}
