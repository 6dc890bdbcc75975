import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// One of the Tabs.
T.TabButton {
    id: tab

    implicitHeight: 42
    width: words.implicitWidth
    Accessible.name: text
    Accessible.onPressAction: checked = true
    background: Item {
        Rectangle {
            visible: tab.checked
            anchors.bottom: parent.bottom
            width: parent.width
            height: 2
            color: Theme.accent
        }
        FocusFrame {
            shown: tab.visualFocus
        }
    }
    contentItem: Words {
        id: words
        text: tab.text
        color: tab.checked ? Theme.text : Theme.secondary
        font.weight: tab.checked ? Font.Medium : Font.Normal
        Accessible.ignored: true
    }
}
