import QtQuick

// The last two lines of the words so far, uncovered as the capsule grows. What may still change is paler.
Item {
    id: words

    required property var hud

    clip: true
    Accessible.role: Accessible.StaticText
    Accessible.name: hud.liveLines.map(line => (line.settled + " " + line.unsettled).trim()).join(" ")

    Text {
        anchors { right: parent.left; rightMargin: -19 }
        y: 12
        height: 19
        visible: words.hud.liveTextIsCut
        text: "…"
        color: "#9c9a93"
        font: words.hud.liveTextFont
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    Repeater {
        model: words.hud.liveLines.length

        Row {
            id: line

            required property int index
            readonly property var parts: words.hud.liveLines[index] ?? { settled: "", unsettled: "" }

            x: 20
            y: 12 + index * 19
            height: 19

            Text {
                height: parent.height
                text: line.parts.settled
                textFormat: Text.PlainText
                color: "#edece8"
                font: words.hud.liveTextFont
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }

            Text {
                height: parent.height
                // A space that nothing cuts off.
                text: (line.parts.settled === "" || line.parts.unsettled === "" ? "" : "\u00a0") + line.parts.unsettled
                textFormat: Text.PlainText
                color: "#9c9a93"
                font: words.hud.liveTextFont
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
        }
    }
}
