import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The parts of a page, of which one is shown.
T.TabBar {
    id: tabs

    implicitHeight: 42
    spacing: 20
    Accessible.role: Accessible.PageTabList
    contentItem: ListView {
        model: tabs.contentModel
        currentIndex: tabs.currentIndex
        spacing: tabs.spacing
        orientation: ListView.Horizontal
        interactive: false
        clip: true
    }
}
