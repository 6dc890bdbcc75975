import QtQuick
import Orvane.Windows

/// Language, key, mode, start, privacy, updates.
SettingsPage {
    id: page

    required property QtObject desk
    readonly property QtObject settings: desk.settings
    readonly property QtObject general: desk.general

    title: Texts.of("Общие")
    Setting {
        title: "Язык интерфейса · Interface language"
        Picker {
            label: "Язык интерфейса · Interface language"
            labelShown: false
            model: ["Русский", "English"]
            currentIndex: page.settings.interfaceLanguage === "en" ? 1 : 0
            onActivated: index => page.settings.interfaceLanguage = index === 1 ? "en" : "ru"
        }
    }
    Setting {
        title: Texts.of("Клавиша диктовки")
        text: page.general.keyText
        Picker {
            label: Texts.of("Клавиша диктовки")
            labelShown: false
            model: page.general.triggers
            currentIndex: page.general.triggerIndex
            onActivated: index => page.general.triggerIndex = index
        }
    }
    Setting {
        title: Texts.of("Режим диктовки")
        text: page.general.modeText
        Picker {
            label: Texts.of("Режим диктовки")
            labelShown: false
            model: page.general.modes
            currentIndex: page.general.modeIndex
            onActivated: index => page.general.modeIndex = index
        }
    }
    Setting {
        title: Texts.of("Показывать слова во время диктовки")
        text: Texts.of("Индикатор показывает распознанное, пока вы говорите. Вставляется только готовый текст.")
        Toggle {
            label: Texts.of("Показывать слова во время диктовки")
            checked: page.settings.showsLiveText
            onToggled: page.settings.showsLiveText = checked
        }
    }
    Setting {
        title: Texts.of("Запускать при входе в систему")
        text: page.general.autostartText
        Toggle {
            label: Texts.of("Запускать при входе в систему")
            checked: page.general.autostart
            onToggled: page.general.autostart = checked
        }
    }
    Setting {
        title: Texts.of("Показывать текущие задачи в боковой панели")
        Toggle {
            label: Texts.of("Показывать текущие задачи в боковой панели")
            checked: page.settings.showActivityPanel
            onToggled: page.settings.showActivityPanel = checked
        }
    }
    Setting {
        title: Texts.of("Делиться анонимной статистикой об устройстве")
        text: Texts.of("Помогает развивать Orvane и сообщать о новых версиях. Раз в сутки отправляются ОС, модель Mac и версия приложения — без имени, почты и содержимого расшифровок. Можно выключить в любой момент.")
        Toggle {
            label: Texts.of("Делиться анонимной статистикой об устройстве")
            checked: page.settings.shareAnonymousStats
            onToggled: page.settings.shareAnonymousStats = checked
        }
    }
    Setting {
        title: page.general.versionText
        text: page.general.updateText
        PushButton {
            text: page.general.hasUpdate ? Texts.of("Скачать…") : Texts.of("Проверить обновления")
            accented: page.general.hasUpdate
            enabled: !page.general.isChecking
            onClicked: page.general.checkForUpdates()
        }
    }
    Words {
        width: parent.width
        topPadding: 8
        role: Words.Small
        color: Theme.accent
        wrapMode: Text.Wrap
        visible: text !== ""
        text: page.general.storageError
    }
}
