import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The program's main window: the modes and the history beside what is open.
Window {
    id: window

    required property QtObject desk
    readonly property QtObject record: desk.record

    function open(page) {
        if (desk.page === page)
            stack.focusPage();
        desk.page = page;
    }

    width: 960
    height: 640
    minimumWidth: 720
    minimumHeight: 480
    title: "Orvane"
    color: Theme.window

    Row {
        anchors.fill: parent
        Sidebar {
            id: sidebar
            width: Theme.sidebarWidth
            height: parent.height
            desk: window.desk
        }
        Line {
            height: parent.height
        }
        PageStack {
            id: stack
            width: parent.width - Theme.sidebarWidth - 1
            height: parent.height
            desk: window.desk
        }
    }

    FileDrop {
        anchors.fill: parent
        onFilesDropped: urls => {
            window.desk.queue.add(urls);
            window.open("file");
        }
    }

    Notice {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.horizontalCenterOffset: Theme.sidebarWidth / 2
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 24
        notices: window.desk.notices
    }

    Shortcut {
        sequences: [StandardKey.Open]
        onActivated: {
            window.open("file");
            window.desk.queue.choose();
        }
    }
    Shortcut {
        sequences: [StandardKey.Find]
        onActivated: {
            if (window.desk.page === "record")
                stack.find();
            else
                sidebar.search();
        }
    }
    Shortcut {
        sequence: "Ctrl+Shift+F"
        onActivated: sidebar.search()
    }
    Shortcut {
        sequence: "Ctrl+,"
        onActivated: window.desk.showSettings()
    }
    Shortcut {
        sequences: [StandardKey.Close]
        onActivated: window.close()
    }
    Shortcut {
        sequences: [StandardKey.Quit]
        onActivated: window.desk.quit()
    }
    Shortcut {
        sequence: "Ctrl+1"
        onActivated: window.open("file")
    }
    Shortcut {
        sequence: "Ctrl+2"
        onActivated: window.open("meeting")
    }
}
