import QtQuick
import Orvane.Windows

/// Whether everything that the program needs works, each with what to do where it does not.
SettingsPage {
    id: page

    required property QtObject check

    title: Texts.of("Проверка")
    text: check.summary
    actions: PushButton {
        iconName: "refresh"
        text: Texts.of("Проверить снова")
        enabled: !page.check.isRunning
        onClicked: page.check.run()
    }
    Component.onCompleted: check.run()
    Repeater {
        model: page.check
        delegate: Item {
            id: row

            required property string checkId
            required property string name
            required property string state
            required property string text

            width: parent.width
            height: Math.max(44, words.implicitHeight + 20)
            Accessible.role: Accessible.ListItem
            Accessible.name: name + ": " + text
            Icon {
                y: 10
                name: ({
                        "good": "check",
                        "bad": "warning",
                        "unknown": "question",
                        "waiting": "more"
                    })[row.state]
                color: row.state === "good" ? Theme.good : row.state === "bad" ? Theme.accent : Theme.secondary
            }
            Column {
                id: words
                x: 36
                y: 10
                width: parent.width - x
                spacing: 2
                Words {
                    width: parent.width
                    text: row.name
                    font.weight: Font.Medium
                }
                Words {
                    width: parent.width
                    color: row.state === "bad" ? Theme.accent : Theme.secondary
                    text: row.text
                    wrapMode: Text.Wrap
                    visible: text !== ""
                }
                Row {
                    topPadding: 4
                    spacing: 16
                    visible: row.checkId === "microphone" && page.check.isListening
                    Words {
                        text: Texts.of("Скажите что-нибудь:")
                        color: Theme.secondary
                    }
                    Waveform {
                        width: Math.min(380, page.width - 2 * Theme.margin - 190)
                        height: 20
                        levels: page.check.waveform
                    }
                }
            }
            Line {
                anchors.bottom: parent.bottom
                width: parent.width
            }
        }
    }
}
