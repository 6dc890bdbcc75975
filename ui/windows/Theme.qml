pragma Singleton

import QtQuick

/// Every colour, size and time of the windows. 8 px grid.
QtObject {
    property bool dark: false
    /// False where the desktop asks for less motion.
    property bool animated: true
    property string family: Qt.application.font.family

    readonly property color window: dark ? "#191918" : "#f6f6f4"
    readonly property color surface: dark ? "#212120" : "#ffffff"
    readonly property color sidebar: dark ? "#1c1c1b" : "#efeeeb"
    readonly property color text: dark ? "#edece8" : "#1d1d1b"
    readonly property color secondary: dark ? "#9c9a93" : "#605e59"
    readonly property color line: dark ? "#33322f" : "#e2e0db"
    readonly property color accent: dark ? "#ff6b57" : "#b93a2a"
    readonly property color overAccent: dark ? "#2a0b06" : "#ffffff"
    readonly property color soft: dark ? "#3a2521" : "#f9e9e5"
    readonly property color selection: dark ? "#2e2d2a" : "#e4e2dc"
    readonly property color hover: dark ? "#262523" : "#eae8e3"
    readonly property color good: dark ? "#7fc08a" : "#2c6e3a"
    readonly property color removed: dark ? "#3a2521" : "#f9e3de"
    readonly property color added: dark ? "#1f3324" : "#e0f0e2"

    readonly property int sidebarWidth: 264
    readonly property int margin: 28
    readonly property int radius: 8
    readonly property int cardRadius: 12
    readonly property int dropRadius: 14
    readonly property int control: 34

    // The five sizes of type.
    readonly property int title: 20
    readonly property int body: 14
    readonly property int button: 13
    readonly property int small: 12
    readonly property int clock: 40

    readonly property int quick: animated ? 140 : 0

    function speaker(number) {
        const light = ["#2a65aa", "#97500f"];
        const night = ["#7fb2ee", "#e0a36b"];
        return (dark ? night : light)[(number + 1) % 2];
    }
}
