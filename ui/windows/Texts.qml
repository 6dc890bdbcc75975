pragma Singleton

import QtQuick

/// The way to the program's table of texts.
QtObject {
    /// Set before a window is made.
    property QtObject table: null
    /// Of a Russian text what the interface shows; a binding that calls it follows the language.
    readonly property var of: {
        const language = table ? table.language : "";
        return russian => table ? table.text(russian) : russian;
    }
    /// The same of a number.
    readonly property var decimal: {
        const language = table ? table.language : "";
        return number => table ? table.decimal(number) : String(number);
    }
}
