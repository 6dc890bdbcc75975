import QtQuick
import Orvane.Windows

/// Has the record's audio recognised again, in another way.
Sheet {
    id: sheet

    required property QtObject desk
    required property QtObject record

    title: Texts.of("Расшифровать заново")
    width: Math.min(520, parent.width - 64)
    // The choices are everyone's: they hold for this once if it is not done.
    property var before: []
    onAboutToShow: before = [desk.recognition.modelIndex, desk.recognition.languageIndex, desk.recognition.detectSpeakers]
    onRejected: {
        desk.recognition.modelIndex = before[0];
        desk.recognition.languageIndex = before[1];
        desk.recognition.detectSpeakers = before[2];
    }
    onAccepted: record.transcribeAgain()
    contentItem: Column {
        spacing: 16
        Words {
            width: parent.width
            color: Theme.secondary
            wrapMode: Text.Wrap
            text: Texts.of("Текст записи будет заменён; исправления и протокол к нему удалятся. В журнале останется и прежний текст.")
        }
        RecognitionChoices {
            recognition: sheet.desk.recognition
        }
    }
    actions: [
        PushButton {
            text: Texts.of("Отмена")
            onClicked: sheet.reject()
        },
        PushButton {
            accented: true
            text: Texts.of("Расшифровать")
            enabled: sheet.desk.recognition.hasModel
            onClicked: sheet.accept()
        }
    ]
}
