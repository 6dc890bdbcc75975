import QtQuick
import Orvane.Windows

/// Recordings that a crash or a cancelled transcription left.
Column {
    id: list

    required property QtObject meeting
    readonly property int count: rows.count

    spacing: 8
    Accessible.role: Accessible.List
    Accessible.name: Texts.of("Записи без расшифровки")
    Words {
        width: parent.width
        role: Words.Small
        text: Texts.of("Записи без расшифровки")
    }
    Repeater {
        id: rows
        model: list.meeting.leftovers
        delegate: Card {
            id: card

            required property int index
            required property string title
            required property string detail

            width: list.width
            height: 60
            Accessible.role: Accessible.ListItem
            Accessible.name: title
            Column {
                x: 16
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - buttons.width - 44
                Words {
                    width: parent.width
                    text: card.title
                    font.weight: Font.Medium
                }
                Words {
                    width: parent.width
                    role: Words.Small
                    text: card.detail
                }
            }
            Row {
                id: buttons
                anchors.right: parent.right
                anchors.rightMargin: 12
                anchors.verticalCenter: parent.verticalCenter
                spacing: 8
                PushButton {
                    iconName: "play"
                    hint: Texts.of("Прослушать")
                    onClicked: list.meeting.playLeftover(card.index)
                }
                PushButton {
                    accented: true
                    text: Texts.of("Расшифровать")
                    enabled: !list.meeting.isTranscribing
                    onClicked: list.meeting.transcribeLeftover(card.index)
                }
                PushButton {
                    iconName: "close"
                    hint: Texts.of("Больше не предлагать — аудиозапись останется на диске")
                    onClicked: list.meeting.dismissLeftover(card.index)
                }
            }
        }
    }
}
