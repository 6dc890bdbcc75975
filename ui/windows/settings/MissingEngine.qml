import QtQuick
import Orvane.Windows

/// Says how to get the program that runs a catalogue's models, while there is none.
Rectangle {
    id: missing

    required property QtObject catalogue

    width: parent ? parent.width : 0
    implicitHeight: words.implicitHeight + 24
    radius: Theme.radius
    color: Theme.soft
    visible: !catalogue.hasEngine
    Icon {
        x: 12
        y: 12
        name: "warning"
        color: Theme.accent
    }
    Words {
        id: words
        x: 44
        y: 12
        width: parent.width - 56
        wrapMode: Text.Wrap
        text: missing.catalogue.engineText
    }
}
