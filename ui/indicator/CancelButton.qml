import QtQuick

// Gives the dictation up, where no key does.
Rectangle {
    id: button

    required property string title

    signal chosen

    width: 24
    height: 24
    radius: 12
    color: pointer.containsMouse ? "#45433f" : "transparent"

    Accessible.role: Accessible.Button
    Accessible.name: title
    Accessible.onPressAction: button.chosen()

    Image {
        anchors.centerIn: parent
        source: "icons/x.svg"
        sourceSize { width: 14; height: 14 }
        cache: false
    }

    MouseArea {
        id: pointer
        anchors.fill: parent
        hoverEnabled: true
        onClicked: button.chosen()
    }
}
