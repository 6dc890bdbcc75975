import QtQuick
import Orvane.Windows

/// The top of a page: what it is, one line about it, and what can be done with it.
Item {
    id: head

    property string title
    property string text
    default property alias actions: row.data

    implicitHeight: Math.max(72, words.implicitHeight + 28)
    Column {
        id: words
        x: Theme.margin
        y: 20
        width: parent.width - 2 * Theme.margin - row.width - 16
        Words {
            width: parent.width
            role: Words.Title
            text: head.title
        }
        Words {
            width: parent.width
            role: Words.Small
            text: head.text
            wrapMode: Text.Wrap
            visible: text !== ""
        }
    }
    Row {
        id: row
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        y: 20
        spacing: 8
    }
}
