import QtQuick
import Orvane.Windows

/// The modes, the history with its search, and what is going on.
Rectangle {
    id: sidebar

    required property QtObject desk

    function search() {
        searchField.forceActiveFocus();
        searchField.selectAll();
    }

    color: Theme.sidebar

    Words {
        id: name
        x: 20
        y: 20
        text: "Orvane"
        font.weight: Font.DemiBold
    }
    PushButton {
        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: name.verticalCenter
        flat: true
        iconName: "settings"
        hint: Texts.of("Настройки…")
        keys: "Ctrl+,"
        onClicked: sidebar.desk.showSettings()
    }
    Column {
        id: modes
        x: 8
        y: 54
        width: parent.width - 16
        spacing: 2
        SideEntry {
            width: parent.width
            iconName: "file"
            text: Texts.of("Файл")
            keys: "Ctrl+1"
            checked: sidebar.desk.page === "file"
            onClicked: sidebar.desk.page = "file"
        }
        SideEntry {
            width: parent.width
            iconName: "people"
            text: Texts.of("Совещание")
            keys: "Ctrl+2"
            checked: sidebar.desk.page === "meeting"
            onClicked: sidebar.desk.page = "meeting"
        }
    }
    Field {
        id: searchField
        anchors.top: modes.bottom
        anchors.topMargin: 16
        x: 12
        width: parent.width - 24
        iconName: "search"
        placeholderText: Texts.of("Поиск в истории")
        Component.onCompleted: text = sidebar.desk.history.search
        onTextEdited: sidebar.desk.history.search = text
        Keys.onEscapePressed: event => {
            event.accepted = text !== "";
            clear();
            sidebar.desk.history.search = "";
        }
        Keys.onDownPressed: {
            list.forceActiveFocus();
            if (list.currentIndex < 0)
                list.currentIndex = 0;
        }
    }
    HistoryList {
        id: list
        anchors.top: searchField.bottom
        anchors.topMargin: 8
        anchors.bottom: activity.top
        anchors.bottomMargin: 8
        width: parent.width
        desk: sidebar.desk
    }
    Scrolled {
        id: activity
        anchors.bottom: parent.bottom
        anchors.bottomMargin: visible ? 16 : 0
        x: 8
        width: parent.width - 16
        visible: sidebar.desk.settings.showActivityPanel && panel.count > 0
        height: visible ? Math.min(contentHeight, parent.height * 0.4) : 0
        contentHeight: panel.implicitHeight
        ActivityPanel {
            id: panel
            width: parent.width
            activity: sidebar.desk.activity
        }
    }
}
