import QtQuick
import Orvane.Windows

/// The settings, a page for each area.
Window {
    id: window

    required property QtObject desk
    readonly property var pages: ["general", "models", "correction", "prompt", "check"]

    width: 900
    height: 640
    minimumWidth: 720
    minimumHeight: 480
    title: Texts.of("Настройки")
    color: Theme.window

    Rectangle {
        id: side
        width: 216
        height: parent.height
        color: Theme.sidebar
        Words {
            x: 20
            y: 20
            text: Texts.of("Настройки")
            font.weight: Font.DemiBold
        }
        Column {
            x: 8
            y: 54
            width: parent.width - 16
            spacing: 2
            Repeater {
                model: [
                    {
                        "icon": "settings",
                        "name": Texts.of("Общие")
                    },
                    {
                        "icon": "microphone",
                        "name": Texts.of("Модели распознавания")
                    },
                    {
                        "icon": "wand",
                        "name": Texts.of("Коррекция")
                    },
                    {
                        "icon": "file",
                        "name": Texts.of("Промпт")
                    },
                    {
                        "icon": "search",
                        "name": Texts.of("Проверка")
                    }
                ]
                delegate: SideEntry {
                    required property int index
                    required property var modelData

                    width: parent.width
                    iconName: modelData.icon
                    text: modelData.name
                    checked: window.desk.settingsPage === window.pages[index]
                    onClicked: window.desk.settingsPage = window.pages[index]
                }
            }
        }
    }
    Line {
        id: line
        anchors.left: side.right
        height: parent.height
    }
    Component {
        id: general
        GeneralPage {
            desk: window.desk
        }
    }
    Component {
        id: models
        CataloguePage {
            desk: window.desk
        }
    }
    Component {
        id: correction
        CorrectionPage {
            desk: window.desk
        }
    }
    Component {
        id: prompt
        PromptPage {
            prompt: window.desk.prompt
        }
    }
    Component {
        id: check
        CheckPage {
            check: window.desk.check
        }
    }
    Loader {
        anchors.left: line.right
        anchors.right: parent.right
        height: parent.height
        sourceComponent: [general, models, correction, prompt, check][Math.max(0, window.pages.indexOf(window.desk.settingsPage))]
    }
    Shortcut {
        sequences: [StandardKey.Close, StandardKey.Cancel]
        onActivated: window.close()
    }
    Shortcut {
        sequences: [StandardKey.Quit]
        onActivated: window.desk.quit()
    }
}
