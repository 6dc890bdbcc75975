import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// A menu that opens at what it is about.
T.Menu {
    id: menu

    /// What it is about, to whoever cannot see it.
    property string label

    margins: 8
    padding: 6
    implicitWidth: 268
    implicitHeight: contentItem.implicitHeight + 2 * padding
    delegate: ContextEntry {}
    background: Rectangle {
        radius: Theme.radius + 2
        color: Theme.surface
        border.width: 1
        border.color: Theme.line
    }
    contentItem: ListView {
        implicitHeight: contentHeight
        interactive: false
        model: menu.contentModel
        currentIndex: menu.currentIndex
        Accessible.role: Accessible.PopupMenu
        Accessible.name: menu.label
    }
}
