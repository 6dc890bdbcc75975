import QtQuick
import Orvane.Windows

/// Something that stands for itself on a page.
Rectangle {
    radius: Theme.cardRadius
    color: Theme.surface
    border.width: 1
    border.color: Theme.line
}
