import QtQuick

// One of several choices, of which one is selected.
Rectangle {
    id: chip

    required property string title
    required property string help
    required property string fontFamily
    required property bool selected
    readonly property alias hovered: pointer.containsMouse

    signal chosen

    implicitWidth: label.implicitWidth + 24
    implicitHeight: 24
    radius: 12
    color: selected ? "#ff6b57" : pointer.containsMouse ? "#45433f" : "#33322f"

    Behavior on color { ColorAnimation { duration: 120; easing.type: Easing.OutCubic } }

    Accessible.role: Accessible.RadioButton
    Accessible.name: title
    Accessible.description: help
    Accessible.checkable: true
    Accessible.checked: selected
    Accessible.onPressAction: chip.chosen()

    Text {
        id: label
        anchors.centerIn: parent
        text: chip.title
        textFormat: Text.PlainText
        color: chip.selected ? "#2a0b06" : "#edece8"
        font { family: chip.fontFamily; pixelSize: 12; weight: chip.selected ? Font.Medium : Font.Normal }
    }

    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        onClicked: chip.chosen()
    }
}
