import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// Files to transcribe: a place to drop them, and the queue of those that wait.
FocusScope {
    id: page

    required property QtObject desk
    readonly property QtObject queue: desk.queue

    PageHead {
        id: head
        width: parent.width
        title: Texts.of("Расшифровка файла")
        text: Texts.of("Всё остаётся на этом компьютере")
    }
    Item {
        id: choices
        anchors.top: head.bottom
        anchors.topMargin: 6
        x: Theme.margin
        width: parent.width - 2 * Theme.margin
        height: recognition.height
        RecognitionChoices {
            id: recognition
            recognition: page.desk.recognition
        }
    }
    Rectangle {
        id: place
        anchors.top: choices.bottom
        anchors.topMargin: 16
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.margin
        x: Theme.margin
        width: parent.width - 2 * Theme.margin
        visible: page.queue.count === 0
        color: "transparent"
        Dashes {
            anchors.fill: parent
        }
        Column {
            anchors.centerIn: parent
            width: parent.width - 48
            spacing: 20
            Empty {
                width: parent.width
                iconName: page.desk.recognition.hasModel ? "file" : "save"
                title: page.desk.recognition.hasModel ? Texts.of("Перетащите аудио или видео") : Texts.of("Сначала нужна модель распознавания")
                text: page.desk.recognition.hasModel ? Texts.of("m4a, mp3, wav, ogg, mp4, mov, mkv и другие; можно несколько сразу") : Texts.of("Она скачивается один раз и работает без интернета.")
            }
            PushButton {
                anchors.horizontalCenter: parent.horizontalCenter
                accented: true
                focus: true
                text: page.desk.recognition.hasModel ? Texts.of("Выбрать файл…") : Texts.of("Выбрать модель…")
                onClicked: page.desk.recognition.hasModel ? page.queue.choose() : page.desk.showSettings("models")
            }
            Words {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                role: Words.Small
                text: "Ctrl+O"
                visible: page.desk.recognition.hasModel
            }
        }
    }
    QueueList {
        anchors.top: choices.bottom
        anchors.topMargin: 16
        anchors.bottom: parent.bottom
        width: parent.width
        visible: page.queue.count > 0
        queue: page.queue
        desk: page.desk
    }
}
