import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// A list to read: the keyboard goes from row to row, and through rows that are higher than the view.
ListView {
    id: list

    readonly property real beginning: originY - topMargin
    readonly property real end: Math.max(beginning, originY + contentHeight + bottomMargin - height)

    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List
    T.ScrollBar.vertical: Scroll {}
    Keys.onPressed: event => {
        const page = height - 48;
        const places = {
            [Qt.Key_PageUp]: contentY - page,
            [Qt.Key_PageDown]: contentY + page,
            [Qt.Key_Home]: beginning,
            [Qt.Key_End]: end
        };
        if (places[event.key] === undefined)
            return;
        contentY = Math.max(beginning, Math.min(places[event.key], end));
        event.accepted = true;
    }
}
