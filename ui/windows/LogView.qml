import QtQuick
import Orvane.Windows

/// What was done with the record, newest last.
ReadingList {
    id: view

    required property QtObject record

    topMargin: 16
    bottomMargin: 16
    spacing: 12
    model: record.log
    Accessible.name: Texts.of("Журнал")
    Keys.onReturnPressed: if (currentItem) currentItem.isOpen = !currentItem.isOpen
    delegate: Item {
        id: entry

        required property string time
        required property string what
        required property string text

        /// All of the text instead of its beginning.
        property bool isOpen: false

        width: ListView.view.width
        height: column.implicitHeight
        Accessible.role: Accessible.ListItem
        Accessible.name: time + " " + what
        Accessible.description: text
        FocusFrame {
            anchors.leftMargin: Theme.margin - 8
            anchors.rightMargin: Theme.margin - 8
            anchors.topMargin: -6
            anchors.bottomMargin: -6
            shown: entry.ListView.isCurrentItem && entry.ListView.view.activeFocus
        }
        TapHandler {
            onTapped: entry.isOpen = !entry.isOpen
        }
        Words {
            x: Theme.margin
            width: 130
            role: Words.Small
            text: entry.time
            Accessible.ignored: true
        }
        Column {
            id: column
            x: Theme.margin + 138
            width: parent.width - x - Theme.margin
            spacing: 2
            Words {
                width: parent.width
                text: entry.what
                font.weight: Font.Medium
                Accessible.ignored: true
            }
            ReadingText {
                width: parent.width
                visible: entry.isOpen
                text: entry.isOpen ? entry.text : ""
                label: entry.what
            }
            Words {
                width: parent.width
                color: Theme.secondary
                text: entry.text
                wrapMode: Text.Wrap
                maximumLineCount: 3
                elide: Text.ElideRight
                visible: text !== "" && !entry.isOpen
                Accessible.ignored: true
            }
        }
    }
}
