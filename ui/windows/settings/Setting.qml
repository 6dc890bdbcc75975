import QtQuick
import Orvane.Windows

/// One setting: its name, what it means, and the control beside it.
Item {
    id: setting

    property string title
    property string text
    default property alias control: place.data

    width: parent ? parent.width : 0
    implicitHeight: Math.max(words.implicitHeight, place.childrenRect.height) + 24
    Column {
        id: words
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width - place.width - 24
        spacing: 2
        Words {
            width: parent.width
            text: setting.title
            wrapMode: Text.Wrap
        }
        Words {
            width: parent.width
            role: Words.Small
            text: setting.text
            wrapMode: Text.Wrap
            visible: text !== ""
        }
    }
    Item {
        id: place
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: childrenRect.width
        height: childrenRect.height
    }
    Line {
        anchors.bottom: parent.bottom
        width: parent.width
    }
}
