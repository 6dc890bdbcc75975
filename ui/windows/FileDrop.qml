import QtQuick
import Orvane.Windows

/// Takes files dropped anywhere in the window.
DropArea {
    id: area

    /// What happens when the files are let go.
    property string title: Texts.of("Отпустите файлы, чтобы расшифровать")

    signal filesDropped(var urls)

    keys: ["text/uri-list"]
    onEntered: drag => drag.accepted = drag.hasUrls
    onDropped: drop => {
        area.filesDropped(drop.urls);
        drop.acceptProposedAction();
    }
    Rectangle {
        anchors.fill: parent
        visible: area.containsDrag
        color: Theme.soft
        opacity: 0.9
        Empty {
            anchors.centerIn: parent
            width: parent.width - 80
            iconName: "file"
            title: area.title
        }
    }
}
