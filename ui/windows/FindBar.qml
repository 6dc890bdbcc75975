import QtQuick
import Orvane.Windows

/// Finds words in the transcript and goes from hit to hit.
Rectangle {
    id: bar

    required property QtObject record
    property bool isOpen: false

    signal goTo(int row)

    /// With what is searched for already.
    function show() {
        isOpen = true;
        field.text = record.findText;
    }
    function open() {
        isOpen = true;
        field.forceActiveFocus();
        field.selectAll();
    }
    function close() {
        isOpen = false;
        field.clear();
        record.findText = "";
    }
    function next(step) {
        const row = record.nextHit(step);
        if (row >= 0)
            goTo(row);
    }

    height: isOpen ? 50 : 0
    visible: isOpen
    color: Theme.sidebar
    Row {
        x: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        spacing: 8
        Field {
            id: field
            width: Math.max(140, Math.min(280, bar.width - 290))
            iconName: "search"
            placeholderText: Texts.of("Найти в тексте")
            onTextEdited: {
                bar.record.findText = text;
                bar.next(0);
            }
            Keys.onReturnPressed: event => bar.next(event.modifiers & Qt.ShiftModifier ? -1 : 1)
            Keys.onEscapePressed: bar.close()
        }
        PushButton {
            iconName: "up"
            hint: Texts.of("Предыдущее")
            keys: "Shift+Enter"
            onClicked: bar.next(-1)
        }
        PushButton {
            iconName: "down"
            hint: Texts.of("Следующее")
            keys: "Enter"
            onClicked: bar.next(1)
        }
        Words {
            anchors.verticalCenter: parent.verticalCenter
            role: Words.Small
            text: bar.record.hitText
        }
    }
    PushButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin - 8
        anchors.verticalCenter: parent.verticalCenter
        flat: true
        iconName: "close"
        hint: Texts.of("Закрыть")
        keys: "Esc"
        onClicked: bar.close()
    }
}
