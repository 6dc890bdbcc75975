import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// Text to read, select and copy.
T.TextArea {
    id: reading

    property string label
    /// Scrolls it by the keys that would move in a text.
    property Scrolled area: null

    implicitHeight: contentHeight
    readOnly: true
    selectByMouse: true
    selectByKeyboard: true
    activeFocusOnTab: true
    wrapMode: TextEdit.Wrap
    color: Theme.text
    selectionColor: Theme.accent
    selectedTextColor: Theme.overAccent
    font.family: Theme.family
    font.pixelSize: Theme.body
    textFormat: TextEdit.PlainText
    Accessible.role: Accessible.EditableText
    Accessible.name: label
    Accessible.readOnly: true
    Keys.onPressed: event => event.accepted = area !== null && !(event.modifiers & Qt.ShiftModifier) && area.scroll(event.key)
    FocusFrame {
        anchors.margins: -6
        shown: reading.activeFocus && (reading.focusReason === Qt.TabFocusReason || reading.focusReason === Qt.BacktabFocusReason)
    }
}
