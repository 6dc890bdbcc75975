import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// A question or a piece of work in the middle of the window, which waits behind it.
T.Dialog {
    id: sheet

    property alias actions: row.data

    parent: T.Overlay.overlay
    x: Math.round((parent.width - width) / 2)
    y: Math.round((parent.height - height) / 2)
    width: Math.min(440, parent.width - 64)
    padding: 24
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape
    implicitHeight: contentItem.implicitHeight + implicitHeaderHeight + implicitFooterHeight + topPadding + bottomPadding
    T.Overlay.modal: Rectangle {
        color: "#66000000"
    }
    background: Rectangle {
        radius: Theme.cardRadius
        color: Theme.surface
        border.width: 1
        border.color: Theme.line
    }
    header: Words {
        leftPadding: 24
        rightPadding: 24
        topPadding: 20
        role: Words.Title
        text: sheet.title
        wrapMode: Text.Wrap
    }
    footer: Item {
        implicitHeight: row.children.length ? row.implicitHeight + 24 : 0
        Row {
            id: row
            anchors.right: parent.right
            anchors.rightMargin: 24
            spacing: 8
        }
    }
}
