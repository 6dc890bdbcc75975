import QtQuick
import Orvane.Windows

/// What a place without content says: what comes here and what to do next.
Column {
    id: empty

    property string iconName
    property string title
    property string text

    spacing: 8
    Icon {
        anchors.horizontalCenter: parent.horizontalCenter
        size: 40
        name: empty.iconName
        color: Theme.secondary
    }
    Words {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        role: Words.Title
        text: empty.title
        wrapMode: Text.Wrap
        visible: text !== ""
    }
    Words {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        color: Theme.secondary
        text: empty.text
        wrapMode: Text.Wrap
        visible: text !== ""
    }
}
