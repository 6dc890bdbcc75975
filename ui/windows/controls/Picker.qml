import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// One of several. `label` says of what; it stands before the choice unless it is hidden.
T.ComboBox {
    id: picker

    property string label
    property bool labelShown: true

    implicitHeight: Theme.control
    implicitWidth: Math.min(320, words.implicitWidth + 48)
    leftPadding: 13
    rightPadding: 34
    opacity: enabled ? 1 : 0.45
    Accessible.name: label
    Accessible.description: displayText
    Accessible.onPressAction: popup.open()
    Keys.onReturnPressed: popup.open()
    background: Rectangle {
        radius: Theme.radius
        color: picker.down || picker.popup.visible ? Theme.selection : picker.hovered ? Theme.hover : Theme.surface
        border.width: 1
        border.color: Theme.line
        FocusFrame {
            shown: picker.visualFocus
        }
    }
    indicator: Icon {
        x: picker.width - width - 11
        anchors.verticalCenter: parent.verticalCenter
        size: 14
        name: "down"
        color: Theme.secondary
    }
    contentItem: Words {
        id: words
        role: Words.Button
        text: picker.labelShown && picker.label !== "" ? picker.label + ": " + picker.displayText : picker.displayText
        Accessible.ignored: true
    }
    delegate: T.ItemDelegate {
        id: choice

        required property int index
        required property var model
        required property var modelData

        width: ListView.view.width
        implicitHeight: 32
        text: picker.textAt(index)
        highlighted: picker.highlightedIndex === index
        Accessible.name: text
        Accessible.onPressAction: if (enabled) clicked()
        background: Rectangle {
            radius: 6
            color: choice.highlighted ? Theme.selection : "transparent"
        }
        contentItem: Item {
            Words {
                anchors.fill: parent
                anchors.leftMargin: 10
                anchors.rightMargin: 28
                role: Words.Button
                text: choice.text
                Accessible.ignored: true
            }
            Icon {
                anchors.right: parent.right
                anchors.rightMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                size: 14
                visible: choice.index === picker.currentIndex
                name: "check"
            }
        }
    }
    popup: T.Popup {
        y: picker.height + 4
        width: Math.max(picker.width, 220)
        height: Math.min(contentItem.implicitHeight + 12, 360)
        padding: 6
        background: Rectangle {
            radius: Theme.radius + 2
            color: Theme.surface
            border.width: 1
            border.color: Theme.line
        }
        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            model: picker.delegateModel
            currentIndex: picker.highlightedIndex
            Accessible.role: Accessible.List
            Accessible.name: picker.label
            T.ScrollBar.vertical: Scroll {}
        }
    }
}
