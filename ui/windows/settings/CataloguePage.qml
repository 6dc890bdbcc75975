import QtQuick
import Orvane.Windows

/// The recognition models.
SettingsPage {
    id: page

    required property QtObject desk
    readonly property QtObject catalogue: desk.speechModels
    readonly property bool isActive: Window.active

    title: Texts.of("Модели распознавания")
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
