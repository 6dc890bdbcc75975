import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// One line to type.
T.TextField {
    id: field

    property string iconName: ""
    /// What it is for, to whoever cannot see it; the placeholder unless said otherwise.
    property string label: placeholderText

    implicitHeight: Theme.control
    implicitWidth: 200
    leftPadding: iconName === "" ? 12 : 36
    rightPadding: 12
    color: Theme.text
    placeholderTextColor: Theme.secondary
    selectionColor: Theme.accent
    selectedTextColor: Theme.overAccent
    font.family: Theme.family
    font.pixelSize: Theme.body
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true
    Accessible.name: label
    background: Rectangle {
        radius: Theme.radius
        color: Theme.surface
        border.width: 1
        border.color: field.activeFocus ? Theme.accent : Theme.line
        Icon {
            x: 10
            anchors.verticalCenter: parent.verticalCenter
            size: 16
            name: field.iconName
            color: Theme.secondary
        }
        Words {
            visible: field.text === "" && field.preeditText === ""
            anchors.fill: parent
            anchors.leftMargin: field.leftPadding
            anchors.rightMargin: field.rightPadding
            color: Theme.secondary
            text: field.placeholderText
            Accessible.ignored: true
        }
    }
}
