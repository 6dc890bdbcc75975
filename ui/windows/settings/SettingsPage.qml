import QtQuick
import Orvane.Windows

/// A page of the settings: a head and a column that scrolls.
FocusScope {
    id: page

    property alias title: head.title
    property alias text: head.text
    property alias actions: head.actions
    /// What becomes of files that are dropped here; empty where none are taken.
    property string dropText: ""
    default property alias content: column.data

    signal filesDropped(var urls)

    PageHead {
        id: head
        width: parent.width
    }
    Scrolled {
        anchors.top: head.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        contentHeight: column.implicitHeight + Theme.margin + 8
        Column {
            id: column
            x: Theme.margin
            y: 8
            width: parent.width - 2 * Theme.margin
            spacing: 8
        }
    }
    FileDrop {
        anchors.fill: parent
        enabled: page.dropText !== ""
        title: page.dropText
        onFilesDropped: urls => page.filesDropped(urls)
    }
}
