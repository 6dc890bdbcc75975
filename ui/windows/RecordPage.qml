import QtQuick
import Orvane.Windows

/// One record of the history: its transcript and all that was made of it.
FocusScope {
    id: page

    required property QtObject desk
    readonly property QtObject record: desk.record
    readonly property bool isNarrow: width < 660

    function find() {
        finder.open();
    }
    Component.onCompleted: if (record.findText !== "") finder.show()

    PageHead {
        id: head
        width: parent.width
        title: page.record.title
        text: page.record.detail
        PushButton {
            iconName: "wand"
            text: page.isNarrow ? "" : Texts.of("Исправить")
            enabled: page.record.canProcess && !page.record.isBusy
            hint: page.record.canProcess ? Texts.of("Исправить пунктуацию и ошибки распознавания языковой моделью") : page.record.processingRefusal
            onClicked: {
                tabs.currentIndex = 1;
                page.record.correct();
            }
        }
        PushButton {
            iconName: "copy"
            text: page.isNarrow ? "" : Texts.of("Скопировать")
            hint: Texts.of("Скопировать текст или Markdown с таймкодами/спикерами")
            onClicked: copyMenu.popup(this, 0, height + 4)
            ContextMenu {
                id: copyMenu
                label: Texts.of("Скопировать")
                ContextEntry {
                    text: Texts.of("Скопировать текст")
                    onTriggered: page.record.copyText()
                }
                ContextEntry {
                    text: Texts.of("Скопировать Markdown")
                    onTriggered: page.record.copyMarkdown()
                }
            }
        }
        PushButton {
            iconName: "save"
            text: page.isNarrow ? "" : Texts.of("Сохранить")
            hint: Texts.of("Сохранить как .txt, .md или .srt")
            onClicked: saveMenu.popup(this, 0, height + 4)
            ContextMenu {
                id: saveMenu
                label: Texts.of("Сохранить")
                ContextEntry {
                    text: Texts.of("Сохранить как .txt")
                    onTriggered: page.record.save("txt")
                }
                ContextEntry {
                    text: Texts.of("Сохранить как .md (Markdown)")
                    onTriggered: page.record.save("md")
                }
                ContextEntry {
                    text: Texts.of("Сохранить как .srt")
                    onTriggered: page.record.save("srt")
                }
            }
        }
        PushButton {
            iconName: "more"
            hint: Texts.of("Ещё")
            onClicked: moreMenu.popup(this, 0, height + 4)
            ContextMenu {
                id: moreMenu
                label: Texts.of("Ещё")
                ContextEntry {
                    text: Texts.of("Найти в тексте")
                    iconName: "search"
                    keys: "Ctrl+F"
                    onTriggered: page.find()
                }
                ContextEntry {
                    text: Texts.of("Расшифровать заново…")
                    iconName: "refresh"
                    enabled: page.record.hasAudio
                    onTriggered: again.open()
                }
                ContextEntry {
                    text: page.record.asText ? Texts.of("Показать с таймкодами") : Texts.of("Показать сплошным текстом")
                    iconName: "menu"
                    onTriggered: page.record.asText = !page.record.asText
                }
                ContextEntry {
                    text: Texts.of("Удалить расшифровку")
                    help: Texts.of("Удалить расшифровку из истории (аудиофайл записи останется на диске)")
                    iconName: "trash"
                    onTriggered: removal.open()
                }
            }
        }
    }
    Tabs {
        id: tabs
        objectName: "recordTabs"
        Accessible.name: Texts.of("Разделы записи")
        anchors.top: head.bottom
        x: Theme.margin
        width: parent.width - 2 * Theme.margin - (page.isNarrow ? 0 : 160)
        spacing: page.isNarrow ? 8 : 20
        Tab {
            text: Texts.of("Расшифровка")
        }
        Tab {
            text: Texts.of("Исправлено")
        }
        Tab {
            text: Texts.of("Протокол")
        }
        Tab {
            text: Texts.of("Вопросы")
        }
        Tab {
            text: Texts.of("Журнал")
        }
    }
    PushButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin - 12
        anchors.verticalCenter: tabs.verticalCenter
        flat: true
        visible: tabs.currentIndex === 0 && !page.isNarrow
        text: Texts.of("Найти в тексте")
        keys: "Ctrl+F"
        onClicked: finder.open()
    }
    Line {
        id: below
        anchors.top: tabs.bottom
        width: parent.width
    }
    FindBar {
        id: finder
        anchors.top: below.bottom
        width: parent.width
        record: page.record
        onGoTo: row => {
            tabs.currentIndex = 0;
            page.record.asText = false;
            transcript.goTo(row);
        }
    }
    BusyBar {
        id: busy
        anchors.top: finder.bottom
        width: parent.width
        record: page.record
    }
    Item {
        anchors.top: busy.bottom
        anchors.bottom: player.top
        width: parent.width
        clip: true
        TranscriptView {
            id: transcript
            anchors.fill: parent
            visible: tabs.currentIndex === 0
            record: page.record
            player: player.item
        }
        Loader {
            anchors.fill: parent
            active: tabs.currentIndex > 0
            sourceComponent: [null, corrected, protocol, questions, log][tabs.currentIndex]
        }
        Component {
            id: corrected
            CorrectedView {
                record: page.record
            }
        }
        Component {
            id: protocol
            ProtocolView {
                record: page.record
            }
        }
        Component {
            id: questions
            QuestionsView {
                record: page.record
            }
        }
        Component {
            id: log
            LogView {
                record: page.record
            }
        }
    }
    Loader {
        id: player
        anchors.bottom: parent.bottom
        width: parent.width
        height: active ? 60 : 0
        active: page.record.hasAudio
        sourceComponent: PlayerBar {
            record: page.record
        }
    }
    RetranscribeSheet {
        id: again
        desk: page.desk
        record: page.record
    }
    Confirm {
        id: removal
        onAboutToShow: {
            title = page.desk.history.removalTitle([page.record.recordId]);
            text = page.desk.history.removalText([page.record.recordId]);
        }
        yes: Texts.of("Удалить")
        onAccepted: page.desk.history.remove([page.record.recordId])
    }
    Connections {
        target: page.record
        function onRecordIdChanged() {
            tabs.currentIndex = 0;
            finder.close();
        }
        function onFoundAt(row) {
            transcript.goTo(row);
        }
        function onFindChanged() {
            if (page.record.findText !== "" && !finder.isOpen)
                finder.show();
        }
    }
}
