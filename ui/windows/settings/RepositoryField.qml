import QtQuick
import Orvane.Windows

/// Where models are downloaded from, when the build does not say.
Column {
    id: place

    required property QtObject repository

    width: parent ? parent.width : 0
    spacing: 6
    bottomPadding: 8
    visible: repository.isAsked
    Words {
        width: parent.width
        wrapMode: Text.Wrap
        text: Texts.of("Адрес хранилища моделей")
    }
    Row {
        width: parent.width
        spacing: 8
        Field {
            id: field
            width: parent.width - check.width - 8
            placeholderText: "https://"
            label: Texts.of("Адрес хранилища моделей")
            text: place.repository.address
            onTextChanged: if (!activeFocus) cursorPosition = 0 // its beginning says more
            Keys.onReturnPressed: check.activate()
            Keys.onEnterPressed: check.activate()
        }
        PushButton {
            id: check
            text: Texts.of("Проверить и сохранить")
            enabled: !place.repository.isChecking
            onClicked: place.repository.check(field.text)
        }
    }
    Words {
        width: parent.width
        role: Words.Small
        color: place.repository.error !== "" ? Theme.accent : Theme.secondary
        wrapMode: Text.Wrap
        text: place.repository.error !== "" ? place.repository.error : place.repository.text
    }
}
