import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// What a control does and which keys do the same, while the pointer rests on it.
T.ToolTip {
    id: hint

    property string keys: ""

    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? parent.height + 6 : 0
    margins: 8
    padding: 8
    topPadding: 5
    bottomPadding: 5
    delay: 600
    timeout: 6000
    implicitWidth: words.implicitWidth + 2 * padding
    implicitHeight: words.implicitHeight + topPadding + bottomPadding
    background: Rectangle {
        color: Theme.text
        radius: 6
    }
    contentItem: Words {
        id: words
        role: Words.Small
        color: Theme.window
        text: hint.keys === "" ? hint.text : hint.text === "" ? hint.keys : hint.text + " · " + hint.keys
    }
}
