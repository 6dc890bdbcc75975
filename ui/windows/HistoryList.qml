import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The records by day, newest first. Several can be chosen with Ctrl and Shift.
ListView {
    id: list

    required property QtObject desk
    readonly property QtObject history: desk.history
    /// Of a day what heads it. A view keeps the texts of its sections: this one follows the language.
    readonly property var heading: {
        const language = desk.settings.interfaceLanguage;
        return day => history.dayName(day);
    }

    function chosen() {
        return history.selection.length ? history.selection : currentItem ? [currentItem.recordId] : [];
    }
    function askToRemove() {
        const records = chosen();
        if (records.length === 0)
            return;
        removal.records = records;
        removal.open();
    }

    clip: true
    model: history
    currentIndex: -1
    keyNavigationEnabled: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List
    Accessible.name: Texts.of("История")
    Keys.onReturnPressed: if (currentItem) history.open(currentItem.recordId)
    Keys.onDeletePressed: askToRemove()
    Keys.onUpPressed: event => {
        history.clearSelection();
        event.accepted = false;
    }
    Keys.onDownPressed: event => {
        history.clearSelection();
        event.accepted = false;
    }
    Keys.onPressed: event => {
        if (!currentItem)
            return;
        if (event.key === Qt.Key_F2)
            currentItem.beginRename();
        else if (event.key === Qt.Key_Menu)
            currentItem.menuRequested(Qt.point(24, 24));
        else if (event.key === Qt.Key_Space && event.modifiers & Qt.ControlModifier)
            history.toggleSelected(currentIndex);
        else
            return;
        event.accepted = true;
    }
    T.ScrollBar.vertical: Scroll {}

    section.property: "day"
    section.delegate: Words {
        required property string section
        width: ListView.view.width
        height: 38
        leftPadding: 20
        topPadding: 14
        role: Words.Small
        text: list.heading(section)
    }
    delegate: HistoryRow {
        width: ListView.view.width
        history: list.history
        isCurrent: ListView.isCurrentItem
        isOpen: list.desk.page === "record" && list.desk.record.recordId === recordId
        onMenuRequested: at => {
            menu.row = this;
            menu.popup(this, at.x, at.y);
        }
    }

    header: Words {
        width: ListView.view.width
        leftPadding: 20
        rightPadding: 20
        bottomPadding: 8
        role: Words.Small
        color: Theme.accent
        wrapMode: Text.Wrap
        visible: text !== ""
        height: visible ? implicitHeight : 0
        text: list.history.error
    }

    Empty {
        parent: list // and not its content
        anchors.centerIn: parent
        width: parent.width - 48
        visible: list.count === 0 && list.history.isLoaded
        text: list.history.search === "" ? Texts.of("Здесь появятся расшифровки файлов и совещаний.") : Texts.of("Ничего не найдено.")
    }

    ContextMenu {
        id: menu

        property Item row: null

        label: row ? row.title : ""
        ContextEntry {
            text: Texts.of("Переименовать…")
            iconName: "pencil"
            keys: "F2"
            onTriggered: menu.row.beginRename()
        }
        ContextEntry {
            text: Texts.of("Сохранить как .txt")
            iconName: "save"
            onTriggered: list.history.save(list.chosen(), "txt")
        }
        ContextEntry {
            text: Texts.of("Сохранить как .md (Markdown)")
            iconName: "save"
            onTriggered: list.history.save(list.chosen(), "md")
        }
        ContextEntry {
            text: Texts.of("Сохранить как .srt")
            iconName: "save"
            onTriggered: list.history.save(list.chosen(), "srt")
        }
        ContextEntry {
            text: Texts.of("Удалить расшифровку")
            help: Texts.of("Удалить расшифровку из истории (аудиофайл записи останется на диске)")
            iconName: "trash"
            keys: "Del"
            onTriggered: list.askToRemove()
        }
    }
    Confirm {
        id: removal

        property var records: []

        title: list.history.removalTitle(records)
        text: list.history.removalText(records)
        yes: Texts.of("Удалить")
        onAccepted: list.history.remove(records)
    }
}
