import QtQuick

// Three dots of which one after the other lights up, in steps with rests between them: a light that moves
// all the time would cost processor time that the engine at work needs.
Row {
    id: dots

    property int lit: 0

    spacing: 4

    Timer {
        interval: 400
        repeat: true
        running: dots.visible && dots.Window.visibility !== Window.Hidden
        onTriggered: dots.lit = (dots.lit + 1) % 3
    }

    Repeater {
        model: 3

        Rectangle {
            id: dot

            required property int index

            width: 4
            height: 4
            radius: 2
            color: dot.index === dots.lit ? "#edece8" : "#6b6963"

            Behavior on color { ColorAnimation { duration: 160; easing.type: Easing.OutCubic } }
        }
    }
}
