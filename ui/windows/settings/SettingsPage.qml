import QtQuick
import QtQuick.Templates as T
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
    Flickable {
        anchors.top: head.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        clip: true
        contentHeight: column.implicitHeight + Theme.margin + 8
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: Scroll {}
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
