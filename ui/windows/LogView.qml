import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// What was done with the record, newest last.
ListView {
    id: view

    required property QtObject record

    clip: true
    topMargin: 16
    bottomMargin: 16
    spacing: 12
    model: record.log
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List
    Accessible.name: Texts.of("Журнал")
    Keys.onReturnPressed: if (currentItem) currentItem.isOpen = !currentItem.isOpen
    T.ScrollBar.vertical: Scroll {}
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
