import QtQuick
import Orvane.Windows

/// The page that is open, made when it is.
Item {
    id: stack

    required property QtObject desk

    function focusPage() {
        if (page.item)
            page.item.forceActiveFocus();
    }
    function find() {
        if (page.item && page.item.find)
            page.item.find();
    }

    Component {
        id: filePage
        FilePage {
            desk: stack.desk
        }
    }
    Component {
        id: meetingPage
        MeetingPage {
            desk: stack.desk
        }
    }
    Component {
        id: recordPage
        RecordPage {
            desk: stack.desk
        }
    }
    Component {
        id: firstStart
        FirstStart {
            desk: stack.desk
        }
    }
    Loader {
        id: page
        anchors.fill: parent
        focus: true
        onLoaded: item.forceActiveFocus()
        sourceComponent: ({
                "file": filePage,
                "meeting": meetingPage,
                "record": recordPage,
                "first": firstStart
            })[stack.desk.page]
    }
}
