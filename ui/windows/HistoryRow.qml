import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// One record: its title, which can be changed in place, and what there is of it.
T.ItemDelegate {
    id: row

    required property QtObject history
    required property string recordId
    required property string title
    required property string detail
    required property string time
    required property string kind
    required property string kindName
    required property bool isSelected
    required property int index
    property bool isCurrent: false
    property bool isOpen: false

    signal menuRequested(point at)

    function choose() {
        row.ListView.view.forceActiveFocus();
        row.ListView.view.currentIndex = row.index;
    }
    function open() {
        choose();
        row.history.clearSelection();
        row.history.open(row.recordId);
    }
    function beginRename() {
        editor.active = true;
    }

    height: 54
    focusPolicy: Qt.NoFocus
    Accessible.name: title
    Accessible.description: kindName + " · " + time + " · " + detail
    Accessible.onPressAction: open()

    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        anchors.topMargin: 2
        anchors.bottomMargin: 2
        radius: Theme.radius
        color: row.isOpen || row.isSelected ? Theme.selection : row.hovered ? Theme.hover : "transparent"
        FocusFrame {
            shown: row.isCurrent && row.ListView.view.activeFocus
        }
    }
    contentItem: Item {
        Words {
            x: 20
            y: 7
            width: parent.width - 40
            text: row.title
            font.weight: Font.Medium
            visible: !editor.active
            Accessible.ignored: true
        }
        Loader {
            id: editor
            x: 12
            y: 1
            width: parent.width - 24
            active: false
            sourceComponent: Field {
                label: Texts.of("Переименовать запись")
                text: row.title
                onEditingFinished: {
                    if (editor.active && text.trim() !== "" && text !== row.title)
                        row.history.rename(row.recordId, text);
                    editor.active = false;
                }
                Keys.onEscapePressed: editor.active = false
                Component.onCompleted: {
                    forceActiveFocus();
                    selectAll();
                }
            }
        }
        Icon {
            id: picture
            x: 20
            y: 28
            size: 14
            name: row.kind === "meeting" ? "people" : "file"
            color: Theme.secondary
        }
        Words {
            x: 40
            y: 27
            width: parent.width - x - at.width - 28
            role: Words.Small
            text: row.detail
            Accessible.ignored: true
        }
        Words {
            id: at
            anchors.right: parent.right
            anchors.rightMargin: 20
            y: 27
            role: Words.Small
            text: row.time
            Accessible.ignored: true
        }
    }
    TapHandler {
        acceptedModifiers: Qt.NoModifier
        onTapped: row.open()
    }
    TapHandler {
        acceptedModifiers: Qt.ControlModifier
        onTapped: {
            row.choose();
            row.history.toggleSelected(row.index);
        }
    }
    TapHandler {
        acceptedModifiers: Qt.ShiftModifier
        onTapped: {
            row.choose();
            row.history.selectTo(row.index);
        }
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: point => {
            row.choose();
            if (!row.isSelected)
                row.history.clearSelection();
            row.menuRequested(point.position);
        }
    }
}
