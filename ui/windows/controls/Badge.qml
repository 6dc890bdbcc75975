import QtQuick
import Orvane.Windows

/// One word beside a title.
Rectangle {
    property alias text: words.text

    implicitWidth: words.implicitWidth + 16
    implicitHeight: 18
    radius: 6
    color: Theme.soft
    visible: text !== ""
    Words {
        id: words
        anchors.centerIn: parent
        role: Words.Small
        color: Theme.accent
    }
}
