import QtQuick
import Orvane.Windows

/// Recording a meeting, what becomes of it, and recordings that are not transcribed yet.
FocusScope {
    id: page

    required property QtObject desk
    readonly property QtObject meeting: desk.meeting
    readonly property bool isRecording: meeting.isRunning
    readonly property bool isTranscribing: meeting.isTranscribing

    Component.onCompleted: meeting.isShown = true
    Component.onDestruction: meeting.isShown = false

    PageHead {
        id: head
        width: parent.width
        title: Texts.of("Совещание")
        text: page.isRecording ? Texts.of("Идёт запись совещания. Текст появится после завершения — Orvane расшифрует запись целиком, с полным контекстом.") : Texts.of("Запись остаётся на этом компьютере и расшифровывается целиком после окончания.")
    }
    Column {
        id: middle
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.max(head.height + 8, (parent.height - height - leftovers.height) / 2)
        width: Math.min(parent.width - 2 * Theme.margin, 560)
        spacing: 20
        Clock {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: page.isRecording || page.isTranscribing
            text: page.meeting.clock
        }
        Waveform {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 380
            height: 52
            visible: page.isRecording
            levels: page.meeting.waveform
        }
        RecordButton {
            anchors.horizontalCenter: parent.horizontalCenter
            focus: true
            implicitWidth: leftovers.visible && page.height < 560 ? 84 : 120
            visible: !page.isTranscribing
            isRecording: page.isRecording
            enabled: page.isRecording || page.meeting.canStart
            onClicked: page.isRecording ? page.meeting.stop() : page.meeting.start()
        }
        Words {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            color: page.isRecording ? Theme.accent : Theme.text
            wrapMode: Text.Wrap
            visible: text !== ""
            text: page.isRecording ? "● " + page.meeting.statusText : page.meeting.statusText !== "" ? page.meeting.statusText : page.meeting.canStart ? Texts.of("Начать запись") : page.meeting.startRefusal
        }
        ProgressLine {
            width: parent.width
            visible: page.isTranscribing && page.meeting.progress > 0
            value: page.meeting.progress
            Accessible.name: page.meeting.statusText
        }
        Words {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            role: Words.Small
            visible: page.isTranscribing && text !== ""
            text: page.meeting.remaining
        }
        Words {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            color: Theme.accent
            wrapMode: Text.Wrap
            visible: text !== ""
            text: page.meeting.errorText !== "" ? page.meeting.errorText : page.meeting.warning
        }
        Words {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            role: Words.Small
            wrapMode: Text.Wrap
            visible: text !== "" && !page.isTranscribing
            text: page.meeting.surroundings
        }
        PushButton {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: page.isTranscribing
            text: Texts.of("Прервать расшифровку")
            hint: Texts.of("Прервать расшифровку — аудиозапись совещания останется на диске")
            onClicked: page.meeting.cancelTranscription()
        }
        PushButton {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: !page.isRecording && !page.isTranscribing && page.meeting.lastRecordId !== ""
            accented: true
            text: Texts.of("Открыть расшифровку")
            onClicked: page.desk.openRecord(page.meeting.lastRecordId)
        }
        PushButton {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: !page.isRecording && !page.isTranscribing && !page.desk.recognition.hasModel
            text: Texts.of("Выбрать модель…")
            onClicked: page.desk.showSettings("models")
        }
    }
    LeftoverList {
        id: leftovers
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.margin
        x: Theme.margin
        width: parent.width - 2 * Theme.margin
        visible: count > 0 && !page.isRecording
        height: visible ? Math.min(implicitHeight, Math.max(110, page.height - head.height - middle.height - 2 * Theme.margin)) : 0
        meeting: page.meeting
    }
}
