import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// What may be higher than its place. It brings the control that the keyboard comes to into sight.
Flickable {
    id: area

    readonly property Item atKeyboard: Window.activeFocusItem
    readonly property int around: 12

    /// Scrolls as a key says; false for a key that says nothing of it.
    function scroll(key) {
        const line = 40;
        const page = height - line;
        const bottom = Math.max(0, contentHeight - height);
        const places = {
            [Qt.Key_Up]: contentY - line,
            [Qt.Key_Down]: contentY + line,
            [Qt.Key_PageUp]: contentY - page,
            [Qt.Key_PageDown]: contentY + page,
            [Qt.Key_Home]: 0,
            [Qt.Key_End]: bottom
        };
        if (places[key] === undefined)
            return false;
        contentY = Math.max(0, Math.min(places[key], bottom));
        return true;
    }

    onAtKeyboardChanged: {
        let item = atKeyboard;
        while (item && item !== contentItem)
            item = item.parent;
        if (!item || atKeyboard.height > height) // a text is read from where it is
            return;
        const top = atKeyboard.mapToItem(contentItem, 0, 0).y - around;
        const bottom = top + atKeyboard.height + 2 * around;
        contentY = Math.max(0, Math.min(Math.max(contentY, bottom - height), top));
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    T.ScrollBar.vertical: Scroll {}
}
