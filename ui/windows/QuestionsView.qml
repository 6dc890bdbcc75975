import QtQuick
import Orvane.Windows

/// Questions about the text, and what the model answered.
Item {
    id: view

    required property QtObject record

    ReadingList {
        id: list
        anchors.top: parent.top
        anchors.bottom: asking.top
        width: parent.width
        topMargin: 16
        bottomMargin: 16
        spacing: 16
        model: view.record.questions
        Accessible.name: Texts.of("Вопросы")
        delegate: Item {
            id: exchange

            required property string question
            required property string answer
            required property string time

            width: ListView.view.width
            height: column.implicitHeight
            Accessible.role: Accessible.ListItem
            Accessible.name: question
            FocusFrame {
                anchors.leftMargin: Theme.margin - 8
                anchors.rightMargin: Theme.margin - 8
                anchors.topMargin: -6
                anchors.bottomMargin: -6
                shown: exchange.ListView.isCurrentItem && exchange.ListView.view.activeFocus
            }
            Column {
                id: column
                x: Theme.margin
                width: parent.width - 2 * Theme.margin
                spacing: 4
                Words {
                    width: parent.width
                    text: exchange.question
                    font.weight: Font.Medium
                    wrapMode: Text.Wrap
                }
                ReadingText {
                    width: parent.width
                    textFormat: TextEdit.RichText
                    text: exchange.answer
                    label: exchange.question
                }
                Words {
                    role: Words.Small
                    text: exchange.time
                }
            }
        }
        Empty {
            parent: list // and not its content
            anchors.centerIn: parent
            width: parent.width - 120
            visible: list.count === 0
            iconName: "question"
            title: Texts.of("Спросите о тексте")
            text: Texts.of("Например: «Кто за что отвечает?» или «Какие решения приняты?»")
        }
    }
    Connections {
        target: view.record.questions
        function onRowsInserted() {
            field.clear(); // what was asked has its answer
        }
    }
    Item {
        id: asking
        anchors.bottom: parent.bottom
        width: parent.width
        height: 66
        Line {
            width: parent.width
        }
        Field {
            id: field
            x: Theme.margin
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width - 2 * Theme.margin - send.width - 8
            focus: true
            enabled: view.record.canProcess
            placeholderText: view.record.canProcess ? Texts.of("Вопрос по тексту") : view.record.processingRefusal
            Keys.onReturnPressed: send.activate()
        }
        PushButton {
            id: send
            anchors.right: parent.right
            anchors.rightMargin: Theme.margin
            anchors.verticalCenter: parent.verticalCenter
            accented: true
            text: Texts.of("Спросить")
            enabled: view.record.canProcess && !view.record.isBusy && field.text.trim() !== ""
            onClicked: view.record.ask(field.text)
        }
    }
}
