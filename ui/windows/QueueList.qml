import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The files that are transcribed and that wait, in their order, which can be changed.
ListView {
    id: list

    required property QtObject queue
    required property QtObject desk

    clip: true
    spacing: 8
    leftMargin: Theme.margin
    rightMargin: Theme.margin
    bottomMargin: Theme.margin
    model: queue
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List
    Accessible.name: Texts.of("Очередь файлов")
    Keys.onDeletePressed: if (currentItem) queue.removeAt(currentIndex)
    Keys.onPressed: event => {
        const isUp = event.key === Qt.Key_Up;
        if (!(event.modifiers & Qt.AltModifier) || !currentItem || !isUp && event.key !== Qt.Key_Down)
            return;
        event.accepted = true;
        if (!(isUp ? currentItem.canRise : currentItem.canSink))
            return;
        const to = currentIndex + (isUp ? -1 : 1);
        queue.move(currentIndex, to);
        currentIndex = to;
    }
    T.ScrollBar.vertical: Scroll {}
    move: Transition {
        NumberAnimation {
            property: "y"
            duration: Theme.quick
            easing.type: Easing.OutCubic
        }
    }
    displaced: move
    delegate: Card {
        id: card

        required property int index
        required property string name
        required property string state
        required property string detail
        required property double progress
        required property string recordId
        required property bool canRise
        required property bool canSink
        readonly property bool isWorking: state === "working"

        width: ListView.view.width - 2 * Theme.margin
        height: column.implicitHeight + 32
        border.color: ListView.isCurrentItem && ListView.view.activeFocus ? Theme.accent : Theme.line
        Accessible.role: Accessible.ListItem
        Accessible.name: name
        Accessible.description: detail
        Column {
            id: column
            x: 16
            y: 14
            width: parent.width - 32 - buttons.width - 12
            spacing: 4
            Words {
                width: parent.width
                text: card.name
                font.weight: Font.Medium
            }
            Words {
                width: parent.width
                role: Words.Small
                color: card.state === "failed" ? Theme.accent : Theme.secondary
                wrapMode: Text.Wrap
                text: card.detail
            }
            ProgressLine {
                width: parent.width
                visible: card.isWorking
                value: card.progress
                Accessible.name: card.name
            }
        }
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.rightMargin: 12
            anchors.verticalCenter: parent.verticalCenter
            spacing: 4
            PushButton {
                visible: card.canRise
                flat: true
                iconName: "up"
                hint: Texts.of("Раньше")
                keys: "Alt+↑"
                onClicked: list.queue.move(card.index, card.index - 1)
            }
            PushButton {
                visible: card.canSink
                flat: true
                iconName: "down"
                hint: Texts.of("Позже")
                keys: "Alt+↓"
                onClicked: list.queue.move(card.index, card.index + 1)
            }
            PushButton {
                visible: card.state === "failed"
                text: Texts.of("Повторить")
                onClicked: list.queue.retry(card.index)
            }
            PushButton {
                visible: card.recordId !== ""
                text: Texts.of("Открыть")
                onClicked: list.desk.openRecord(card.recordId)
            }
            PushButton {
                flat: !card.isWorking
                text: card.isWorking ? Texts.of("Отменить") : ""
                iconName: card.isWorking ? "" : "close"
                hint: card.isWorking ? "" : Texts.of("Убрать из очереди")
                onClicked: list.queue.removeAt(card.index)
            }
        }
    }
    footer: Item {
        width: list.width - 2 * Theme.margin
        height: 58
        PushButton {
            y: 16
            iconName: "plus"
            text: Texts.of("Добавить файлы…")
            keys: "Ctrl+O"
            onClicked: list.queue.choose()
        }
    }
}
