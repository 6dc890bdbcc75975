import QtQuick
import Orvane.Windows

/// The page that is open, loaded when it is.
Item {
    id: stack

    required property QtObject desk
    readonly property string scene: ({
            "file": "FilePage.qml",
            "meeting": "MeetingPage.qml",
            "record": "RecordPage.qml",
            "first": "FirstStart.qml"
        })[desk.page]

    function focusPage() {
        if (page.item)
            page.item.forceActiveFocus();
    }
    function find() {
        if (page.item && page.item.find)
            page.item.find();
    }
    function load() {
        page.setSource(scene, {
            "desk": desk
        });
    }

    onSceneChanged: load()
    Component.onCompleted: if (page.status === Loader.Null) load()
    Loader {
        id: page
        anchors.fill: parent
        focus: true
        onLoaded: item.forceActiveFocus()
    }
}
