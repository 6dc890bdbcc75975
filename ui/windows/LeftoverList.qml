import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// Recordings that a crash or a cancelled transcription left; they scroll when there is no room for all.
FocusScope {
    id: list

    required property QtObject meeting
    readonly property int count: rows.count

    implicitHeight: heading.height + rows.anchors.topMargin + rows.contentHeight
    Words {
        id: heading
        width: parent.width
        role: Words.Small
        text: Texts.of("Записи без расшифровки")
    }
    ListView {
        id: rows
        anchors.top: heading.bottom
        anchors.topMargin: 8
        anchors.bottom: parent.bottom
        width: parent.width
        clip: true
        spacing: 8
        boundsBehavior: Flickable.StopAtBounds
        model: list.meeting.leftovers
        Accessible.role: Accessible.List
        Accessible.name: heading.text
        T.ScrollBar.vertical: Scroll {}
        delegate: Card {
            id: card

            required property int index
            required property string title
            required property string detail

            width: rows.width - (rows.contentHeight > rows.height ? 14 : 0) // for the scroll bar
            height: words.implicitHeight + 20
            Accessible.role: Accessible.ListItem
            Accessible.name: title
            Accessible.description: detail
            Column {
                id: words
                x: 16
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - buttons.width - 44
                Words {
                    width: parent.width
                    text: card.title
                    font.weight: Font.Medium
                    wrapMode: Text.Wrap
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
