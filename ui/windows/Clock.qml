import QtQuick
import Orvane.Windows

/// A time in large figures that keep their places.
Row {
    id: clock

    property string text

    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Repeater {
        model: clock.text.length
        delegate: Words {
            required property int index
            readonly property string figure: clock.text[index]

            width: figure === ":" ? 13 : 26
            horizontalAlignment: Text.AlignHCenter
            role: Words.Clock
            text: figure
            Accessible.ignored: true
        }
    }
}
