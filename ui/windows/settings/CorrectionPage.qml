import QtQuick
import Orvane.Windows

/// Processing by language models: whether, with which engine, with which model.
SettingsPage {
    id: page

    required property QtObject desk
    readonly property QtObject settings: desk.settings
    readonly property QtObject catalogue: desk.languageModels
    readonly property bool isActive: Window.active

    title: Texts.of("Коррекция")
    text: catalogue.hasEngine ? catalogue.engineText : ""
    dropText: Texts.of("Отпустите файл модели, чтобы добавить его")
    onFilesDropped: urls => catalogue.importFiles(urls)
    // The user may have installed an engine meanwhile.
    onIsActiveChanged: {
        if (isActive)
            catalogue.look();
    }
    actions: PushButton {
        text: Texts.of("Добавить из файла…")
        onClicked: page.catalogue.importFile()
    }
    Setting {
        title: Texts.of("Обрабатывать текст языковой моделью")
        text: Texts.of("Пунктуация и ошибки в диктовке и расшифровках, письма, протоколы и вопросы по тексту.")
        Toggle {
            label: Texts.of("Обрабатывать текст языковой моделью")
            checked: page.settings.textCorrectionEnabled
            onToggled: page.settings.textCorrectionEnabled = checked
        }
    }
    Setting {
        title: Texts.of("Движок")
        text: page.catalogue.engineNote
        enabled: page.settings.textCorrectionEnabled
        opacity: enabled ? 1 : 0.5
        Picker {
            label: Texts.of("Движок")
            labelShown: false
            model: page.catalogue.engines
            currentIndex: page.catalogue.engineIndex
            onActivated: index => page.catalogue.engineIndex = index
        }
    }
    Item {
        width: parent.width
        height: 8
    }
    MissingEngine {
        catalogue: page.catalogue
    }
    RepositoryField {
        repository: page.desk.repository
    }
    CatalogueList {
        catalogue: page.catalogue
    }
}
