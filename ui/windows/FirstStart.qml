import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// The first minutes: a model, the language and the microphone, the key.
FocusScope {
    id: page

    required property QtObject desk
    readonly property QtObject first: desk.firstStart

    Component.onCompleted: first.begin()
    Component.onDestruction: first.end()

    PageHead {
        id: head
        width: parent.width
        title: Texts.of("Добро пожаловать в Orvane")
        text: Texts.of("Три шага, и можно диктовать. Всё остаётся на этом компьютере.")
        Picker {
            label: "Язык · Language"
            labelShown: false
            model: ["Русский", "English"]
            currentIndex: page.desk.settings.interfaceLanguage === "en" ? 1 : 0
            onActivated: index => page.desk.settings.interfaceLanguage = index === 1 ? "en" : "ru"
        }
    }
    Scrolled {
        anchors.top: head.bottom
        anchors.bottom: foot.top
        width: parent.width
        contentHeight: steps.implicitHeight + 24
        Column {
            id: steps
            x: Theme.margin
            y: 8
            width: parent.width - 2 * Theme.margin
            spacing: 12
            Step {
                number: 1
                title: Texts.of("Модель распознавания")
                isDone: page.desk.recognition.hasModel
                text: page.first.modelText
                RepositoryField {
                    repository: page.desk.repository
                }
                CatalogueList {
                    catalogue: page.desk.speechModels
                    model: page.first.suggestedModels
                    leads: !page.desk.recognition.hasModel
                }
                Flow {
                    width: parent.width
                    spacing: 8
                    PushButton {
                        text: Texts.of("Все модели…")
                        onClicked: page.desk.showSettings("models")
                    }
                    PushButton {
                        text: Texts.of("Добавить из файла…")
                        onClicked: page.desk.speechModels.importFile()
                    }
                }
            }
            Step {
                number: 2
                title: Texts.of("Язык и микрофон")
                isDone: page.first.microphone.hasHeard
                text: page.first.microphone.text
                Flow {
                    id: hearing
                    width: parent.width
                    spacing: 16
                    Picker {
                        id: language
                        label: Texts.of("Язык")
                        model: page.desk.recognition.languages
                        textRole: "name"
                        currentIndex: page.desk.recognition.languageIndex
                        onActivated: index => page.desk.recognition.languageIndex = index
                    }
                    Waveform {
                        width: Math.max(160, Math.min(380, hearing.width - language.width - 16))
                        height: Theme.control
                        clip: true
                        levels: page.first.microphone.waveform
                    }
                }
            }
            Step {
                number: 3
                title: Texts.of("Клавиша")
                isDone: trial.text !== ""
                text: page.first.keyText
                Words {
                    width: parent.width
                    visible: text !== ""
                    color: Theme.secondary
                    text: page.first.pasteText
                    wrapMode: Text.Wrap
                }
                PushButton {
                    visible: page.first.pasteText !== ""
                    text: Texts.of("Разрешить вставку текста…")
                    onClicked: page.first.askForPaste()
                }
                T.TextArea {
                    id: trial
                    width: parent.width
                    height: 72
                    padding: 12
                    wrapMode: TextEdit.Wrap
                    color: Theme.text
                    font.family: Theme.family
                    font.pixelSize: Theme.body
                    selectByMouse: true
                    placeholderText: Texts.of("Поставьте сюда курсор и продиктуйте что-нибудь")
                    Accessible.name: Texts.of("Проба диктовки")
                    Keys.priority: Keys.BeforeItem
                    Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
                    Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
                    background: Rectangle {
                        radius: Theme.radius
                        color: Theme.window
                        border.width: 1
                        border.color: trial.activeFocus ? Theme.accent : Theme.line
                        Words {
                            x: 12
                            y: 12
                            width: parent.width - 24
                            visible: trial.text === ""
                            color: Theme.secondary
                            text: trial.placeholderText
                            wrapMode: Text.Wrap
                            Accessible.ignored: true
                        }
                    }
                }
            }
        }
    }
    Item {
        id: foot
        anchors.bottom: parent.bottom
        width: parent.width
        height: 66
        Line {
            width: parent.width
        }
        PushButton {
            anchors.right: parent.right
            anchors.rightMargin: Theme.margin
            anchors.verticalCenter: parent.verticalCenter
            accented: page.desk.recognition.hasModel
            text: page.desk.recognition.hasModel ? Texts.of("Готово") : Texts.of("Пропустить")
            onClicked: page.first.finish()
        }
    }
}
