import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// What may be higher than its place. It brings the control that the keyboard comes to into sight.
Flickable {
    id: area

    readonly property Item atKeyboard: Window.activeFocusItem
    readonly property int around: 12

    onAtKeyboardChanged: {
        let item = atKeyboard;
        while (item && item !== contentItem)
            item = item.parent;
        if (!item)
            return;
        const top = atKeyboard.mapToItem(contentItem, 0, 0).y - around;
        const bottom = top + atKeyboard.height + 2 * around;
        contentY = Math.max(0, Math.min(Math.max(contentY, bottom - height), top));
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    T.ScrollBar.vertical: Scroll {}
}
