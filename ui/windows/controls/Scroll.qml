import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The bar beside what scrolls.
T.ScrollBar {
    id: bar

    implicitWidth: 10
    padding: 2
    visible: size < 1
    minimumSize: 0.06
    Accessible.ignored: true
    contentItem: Rectangle {
        implicitWidth: 6
        radius: 3
        color: Theme.secondary
        opacity: bar.pressed ? 0.7 : bar.hovered || bar.active ? 0.45 : 0.2
    }
}
