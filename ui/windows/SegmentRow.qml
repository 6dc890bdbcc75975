import QtQuick
import Orvane.Windows

/// One segment: when, who, what.
Item {
    id: row

    required property int index
    required property string time
    required property int speaker
    required property string speakerName
    required property string text
    required property string marked
    required property int startMs
    property bool isSpoken: false
    property bool isPlayable: false
    property bool hasSpeakers: false

    signal playRequested
    signal speakerActivated

    height: Math.max(34, words.implicitHeight + 14)
    Accessible.role: Accessible.ListItem
    Accessible.name: [time, speakerName, text].filter(part => part !== "").join(" ")
    Accessible.onPressAction: if (isPlayable) playRequested()

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        radius: Theme.radius
        color: row.isSpoken ? Theme.soft : pointer.hovered && row.isPlayable ? Theme.hover : "transparent"
        border.width: row.ListView.isCurrentItem && row.ListView.view.activeFocus ? 2 : 0
        border.color: Theme.accent
    }
    Words {
        x: Theme.margin
        y: 9
        width: 56
        role: Words.Small
        text: row.time
        Accessible.ignored: true
    }
    Words {
        id: who
        x: Theme.margin + 64
        y: 9
        width: 96
        role: Words.Small
        color: Theme.speaker(row.speaker)
        text: row.speakerName
        visible: row.hasSpeakers
        Accessible.ignored: true
        HoverHandler {
            enabled: row.speaker > 0
            cursorShape: Qt.PointingHandCursor
        }
    }
    Words {
        id: words
        x: Theme.margin + (row.hasSpeakers ? 168 : 64)
        y: 7
        width: parent.width - x - Theme.margin
        textFormat: row.marked === "" ? Text.PlainText : Text.StyledText
        text: row.marked === "" ? row.text : row.marked
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    HoverHandler {
        id: pointer
    }
    TapHandler {
        onTapped: point => {
            const x = point.position.x;
            row.ListView.view.forceActiveFocus();
            row.ListView.view.currentIndex = row.index;
            if (who.visible && row.speaker > 0 && x >= who.x && x < who.x + who.width)
                row.speakerActivated();
            else if (row.isPlayable)
                row.playRequested();
        }
    }
}
