import QtQuick
import Orvane.Windows

/// Text to read, select and copy.
TextEdit {
    id: reading

    property string label

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
}
