import QtQuick
import Orvane.Windows

/// What the program is doing now, each with how far it is and a way to stop it.
Column {
    id: panel

    required property QtObject activity
    readonly property int count: rows.count

    spacing: 8
    Accessible.role: Accessible.List
    Accessible.name: Texts.of("Сейчас")
    Repeater {
        id: rows
        model: panel.activity
        delegate: Card {
            id: card

            required property int index
            required property string title
            required property string detail
            required property double progress
            required property bool canCancel
            required property string cancelText
            required property bool canTranscribe

            width: panel.width
            height: column.implicitHeight + 24
            Accessible.role: Accessible.ListItem
            Accessible.name: title
            Accessible.description: detail
            Column {
                id: column
                x: 12
                y: 10
                width: parent.width - 24
                spacing: 6
                Item {
                    width: parent.width
                    height: 20
                    Words {
                        role: Words.Small
                        color: Theme.text
                        width: parent.width - (card.canTranscribe ? 54 : 26)
                        height: 20
                        text: card.title
                    }
                    PushButton {
                        anchors.right: parent.right
                        anchors.rightMargin: 24
                        anchors.verticalCenter: parent.verticalCenter
                        implicitHeight: 26
                        flat: true
                        visible: card.canTranscribe
                        iconName: "file"
                        hint: Texts.of("Расшифровать")
                        onClicked: panel.activity.transcribe(card.index)
                    }
                    PushButton {
                        anchors.right: parent.right
                        anchors.rightMargin: -6
                        anchors.verticalCenter: parent.verticalCenter
                        implicitHeight: 26
                        flat: true
                        visible: card.canCancel
                        iconName: "close"
                        hint: card.cancelText
                        onClicked: panel.activity.cancel(card.index)
                    }
                }
                ProgressLine {
                    width: parent.width
                    visible: card.progress >= 0
                    value: Math.max(0, card.progress)
                    Accessible.name: card.title
                }
                Words {
                    role: Words.Small
                    width: parent.width
                    text: card.detail
                    wrapMode: Text.Wrap
                    visible: text !== ""
                }
            }
        }
    }
}
