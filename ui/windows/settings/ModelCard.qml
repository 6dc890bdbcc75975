import QtQuick
import Orvane.Windows

/// One model of a catalogue, and what can be done with it now.
Card {
    id: card

    required property QtObject catalogue
    required property string modelId
    required property string name
    required property string detail
    required property string badge
    required property string state
    required property double progress
    required property string progressText
    /// Downloading it is the next thing to do.
    property bool isNext: false
    readonly property bool isLoading: state === "loading"

    signal removalAsked

    implicitHeight: column.implicitHeight + 28
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.description: detail
    Column {
        id: column
        x: 16
        y: 13
        width: parent.width - 32
        spacing: 2
        Flow {
            width: parent.width - buttons.width - 16
            spacing: 6
            bottomPadding: 2
            Words {
                width: Math.min(implicitWidth, parent.width)
                text: card.name
                font.weight: Font.Medium
            }
            Badge {
                text: card.badge
            }
        }
        Words {
            width: parent.width - buttons.width - 16
            role: Words.Small
            text: card.detail
            wrapMode: Text.Wrap
        }
        Item {
            width: parent.width
            height: 12
            visible: card.isLoading
            ProgressLine {
                anchors.bottom: parent.bottom
                width: parent.width
                value: Math.max(0, card.progress)
                Accessible.name: card.name
            }
        }
        Words {
            width: parent.width
            topPadding: 4
            role: Words.Small
            visible: text !== ""
            text: card.progressText
            wrapMode: Text.Wrap
        }
    }
    Row {
        id: buttons
        anchors.right: parent.right
        anchors.rightMargin: 16
        y: 16
        spacing: 6
        PushButton {
            visible: card.state === "here"
            accented: true
            text: Texts.of("Использовать")
            onClicked: card.catalogue.use(card.modelId)
        }
        PushButton {
            visible: card.state === "here" || card.state === "used"
            text: Texts.of("Удалить")
            onClicked: card.removalAsked()
        }
        PushButton {
            visible: card.state === "partial"
            text: Texts.of("Продолжить")
            accented: true
            onClicked: card.catalogue.download(card.modelId)
        }
        PushButton {
            visible: card.state === "partial"
            text: Texts.of("Сбросить")
            hint: Texts.of("Удалить скачанную часть")
            onClicked: card.catalogue.cancel(card.modelId)
        }
        PushButton {
            visible: card.state === "absent"
            enabled: card.catalogue.canDownload
            accented: card.isNext && enabled
            text: Texts.of("Скачать")
            onClicked: card.catalogue.download(card.modelId)
        }
        PushButton {
            visible: card.isLoading
            text: Texts.of("Отменить")
            onClicked: card.catalogue.cancel(card.modelId)
        }
    }
}
