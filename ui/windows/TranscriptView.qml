import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The segments with their times and speakers, or the text as a whole.
Item {
    id: view

    required property QtObject record
    /// Null where there is nothing to hear.
    property Item player: null
    readonly property int spoken: player && player.isOpen ? record.segmentAt(player.position) : -1

    function goTo(row) {
        list.currentIndex = row;
        list.positionViewAtIndex(row, ListView.Center);
    }
    onSpokenChanged: {
        if (spoken < 0 || !player.isPlaying)
            return;
        const item = list.itemAtIndex(spoken);
        const y = item ? item.y - list.contentY : -1;
        if (y < list.height / 3 || y > list.height * 2 / 3)
            list.positionViewAtIndex(spoken, ListView.Center);
    }

    ListView {
        id: list
        objectName: "segments"
        anchors.fill: parent
        visible: !view.record.asText
        clip: true
        topMargin: 12
        bottomMargin: 12
        model: view.record.segments
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        Accessible.role: Accessible.List
        Accessible.name: Texts.of("Расшифровка")
        Keys.onReturnPressed: if (view.player && currentItem) view.player.playFrom(currentItem.startMs)
        Keys.onPressed: event => {
            if (event.key === Qt.Key_F2 && currentItem && currentItem.speaker > 0) {
                currentItem.speakerActivated();
                event.accepted = true;
            }
        }
        Keys.onSpacePressed: if (view.player) view.player.toggle()
        T.ScrollBar.vertical: Scroll {}
        delegate: SegmentRow {
            width: ListView.view.width
            isSpoken: view.spoken === index
            isPlayable: view.player !== null
            hasSpeakers: view.record.hasSpeakers
            onPlayRequested: view.player.playFrom(startMs)
            onSpeakerActivated: {
                rename.number = speaker;
                rename.open();
            }
        }
    }
    Scrolled {
        id: area
        anchors.fill: parent
        visible: view.record.asText
        contentHeight: whole.implicitHeight + 32
        ReadingText {
            id: whole
            area: area
            x: Theme.margin
            y: 16
            width: parent.width - 2 * Theme.margin
            text: view.record.asText ? view.record.text : ""
            label: Texts.of("Текст расшифровки")
        }
    }
    Empty {
        anchors.centerIn: parent
        width: parent.width - 80
        visible: view.record.isLoaded && view.record.text === ""
        text: Texts.of("В записи нет текста.")
    }
    Sheet {
        id: rename

        property int number: 0

        title: Texts.of("Имя спикера")
        onOpened: {
            field.text = view.record.speakerName(number);
            field.forceActiveFocus();
            field.selectAll();
        }
        onAccepted: view.record.renameSpeaker(number, field.text)
        contentItem: Field {
            id: field
            label: Texts.of("Имя спикера")
            Keys.onReturnPressed: rename.accept()
        }
        actions: [
            PushButton {
                text: Texts.of("Отмена")
                onClicked: rename.reject()
            },
            PushButton {
                accented: true
                text: Texts.of("Переименовать")
                onClicked: rename.accept()
            }
        ]
    }
}
