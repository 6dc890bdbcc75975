import QtQuick
import Orvane.Windows

/// With which model, in which language and whether with speakers something is recognised.
Flow {
    id: choices

    required property QtObject recognition

    width: parent ? parent.width : 0
    spacing: 8
    Picker {
        label: Texts.of("Модель")
        visible: choices.recognition.hasModel
        model: choices.recognition.models
        textRole: "name"
        valueRole: "id"
        currentIndex: choices.recognition.modelIndex
        onActivated: index => choices.recognition.modelIndex = index
    }
    Picker {
        label: Texts.of("Язык")
        model: choices.recognition.languages
        textRole: "name"
        valueRole: "id"
        currentIndex: choices.recognition.languageIndex
        onActivated: index => choices.recognition.languageIndex = index
    }
    Tick {
        height: Theme.control
        leftPadding: 4
        text: Texts.of("Размечать спикеров")
        checked: choices.recognition.detectSpeakers
        onToggled: choices.recognition.detectSpeakers = checked
    }
}
