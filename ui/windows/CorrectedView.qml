import QtQuick
import Orvane.Windows

/// The original and the corrected text side by side, with what differs marked.
Item {
    id: view

    required property QtObject record

    ReadingList {
        id: list
        anchors.fill: parent
        visible: view.record.corrected !== ""
        topMargin: 12
        bottomMargin: 12
        model: view.record.differences
        Accessible.name: Texts.of("Исправлено")
        header: Item {
            width: list.width
            height: 32
            Words {
                x: Theme.margin
                role: Words.Small
                text: Texts.of("Было")
            }
            Words {
                x: list.width / 2 + 12
                role: Words.Small
                text: Texts.of("Стало")
            }
            PushButton {
                anchors.right: parent.right
                anchors.rightMargin: Theme.margin - 8
                implicitHeight: 28
                flat: true
                iconName: "copy"
                hint: Texts.of("Скопировать исправленный текст")
                onClicked: view.record.copyCorrected()
            }
        }
        delegate: Item {
            id: pair

            required property string before
            required property string after

            width: ListView.view.width
            height: Math.max(left.implicitHeight, right.implicitHeight) + 12
            Accessible.role: Accessible.ListItem
            Accessible.name: right.text.replace(/<[^>]*>/g, "")
            FocusFrame {
                anchors.leftMargin: Theme.margin - 8
                anchors.rightMargin: Theme.margin - 8
                anchors.topMargin: -4
                anchors.bottomMargin: 6
                shown: pair.ListView.isCurrentItem && pair.ListView.view.activeFocus
            }
            Words {
                id: left
                x: Theme.margin
                width: parent.width / 2 - Theme.margin - 12
                textFormat: Text.RichText
                text: pair.before
                wrapMode: Text.Wrap
                color: Theme.secondary
                Accessible.ignored: true
            }
            Words {
                id: right
                x: parent.width / 2 + 12
                width: parent.width / 2 - Theme.margin - 12
                textFormat: Text.RichText
                text: pair.after
                wrapMode: Text.Wrap
                Accessible.ignored: true
            }
        }
    }
    Offer {
        anchors.centerIn: parent
        width: Math.min(parent.width - 80, 460)
        visible: view.record.corrected === "" && !view.record.isBusy
        record: view.record
        iconName: "wand"
        title: Texts.of("Текст ещё не исправлен")
        text: Texts.of("Языковая модель расставит знаки препинания и исправит ошибки распознавания. Исходный текст сохранится.")
        action: Texts.of("Исправить")
        onAccepted: view.record.correct()
    }
}
