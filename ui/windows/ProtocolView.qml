import QtQuick
import Orvane.Windows

/// The protocol of a meeting, or of any record.
Item {
    id: view

    required property QtObject record

    Scrolled {
        id: area
        anchors.fill: parent
        visible: view.record.summary !== ""
        contentHeight: words.implicitHeight + buttons.height + 48
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.rightMargin: Theme.margin
            y: 12
            spacing: 8
            PushButton {
                iconName: "copy"
                text: Texts.of("Скопировать")
                onClicked: view.record.copySummary()
            }
            PushButton {
                iconName: "save"
                text: Texts.of("Сохранить")
                onClicked: view.record.saveSummary()
            }
            PushButton {
                iconName: "refresh"
                hint: Texts.of("Составить заново")
                enabled: view.record.canProcess
                onClicked: view.record.summarize()
            }
        }
        ReadingText {
            id: words
            area: area
            x: Theme.margin
            y: buttons.height + 20
            width: Math.min(parent.width - 2 * Theme.margin, 720)
            textFormat: TextEdit.RichText
            text: view.record.summaryHtml
            label: Texts.of("Протокол")
        }
    }
    Offer {
        anchors.centerIn: parent
        width: Math.min(parent.width - 80, 460)
        visible: view.record.summary === "" && !view.record.isBusy
        record: view.record
        iconName: "file"
        title: Texts.of("Протокола ещё нет")
        text: Texts.of("Языковая модель составит его по расшифровке: кратко суть и список задач.")
        action: Texts.of("Составить протокол")
        onAccepted: view.record.summarize()
    }
}
