import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The instruction to the model that corrects.
FocusScope {
    id: page

    required property QtObject prompt

    PageHead {
        id: head
        width: parent.width
        title: Texts.of("Промпт")
        text: Texts.of("Инструкция для модели, которая исправляет текст")
        PushButton {
            text: Texts.of("Вернуть исходный")
            enabled: !page.prompt.isDefault || editor.text !== page.prompt.text
            onClicked: page.prompt.reset()
        }
    }
    Card {
        id: card
        anchors.top: head.bottom
        anchors.topMargin: 8
        anchors.bottom: note.top
        anchors.bottomMargin: 12
        x: Theme.margin
        width: parent.width - 2 * Theme.margin
        border.color: editor.activeFocus ? Theme.accent : Theme.line
        Flickable {
            id: area
            anchors.fill: parent
            anchors.margins: 14
            clip: true
            contentHeight: editor.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            T.ScrollBar.vertical: Scroll {}
            T.TextArea.flickable: T.TextArea {
                id: editor
                focus: true
                wrapMode: TextEdit.Wrap
                color: Theme.text
                selectionColor: Theme.accent
                selectedTextColor: Theme.overAccent
                font.family: Theme.family
                font.pixelSize: Theme.body
                selectByMouse: true
                text: page.prompt.text
                Accessible.name: Texts.of("Промпт")
                Keys.priority: Keys.BeforeItem
                Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
                Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
                onEditingFinished: page.prompt.store(text)
                Component.onDestruction: page.prompt.store(text)
            }
        }
    }
    Column {
        id: note
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.margin
        x: Theme.margin
        width: parent.width - 2 * Theme.margin
        spacing: 4
        Words {
            width: parent.width
            wrapMode: Text.Wrap
            text: Texts.of("К промпту всегда добавляется защита:")
        }
        Words {
            width: parent.width
            role: Words.Small
            wrapMode: Text.Wrap
            text: page.prompt.safeguard
        }
    }
}
