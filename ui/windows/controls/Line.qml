import QtQuick
import Orvane.Windows

/// A hairline between two areas.
Rectangle {
    implicitWidth: 1
    implicitHeight: 1
    color: Theme.line
}
