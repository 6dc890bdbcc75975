import QtQuick
import Orvane.Windows

/// What is being made of the record, how far it is, and why the last attempt failed.
Rectangle {
    id: bar

    required property QtObject record
    readonly property bool isShown: record.isBusy || record.error !== ""

    color: record.error !== "" && !record.isBusy ? Theme.soft : Theme.surface
    height: isShown ? Math.max(44, words.implicitHeight + 20) : 0
    visible: isShown
    Accessible.role: Accessible.AlertMessage
    Accessible.name: words.text
    Words {
        id: words
        x: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        width: bar.record.isBusy ? Math.min(implicitWidth, parent.width * 0.45) : parent.width - 2 * Theme.margin - 110
        text: bar.record.isBusy ? bar.record.busyText : bar.record.error
        wrapMode: bar.record.isBusy ? Text.NoWrap : Text.Wrap
    }
    ProgressLine {
        anchors.left: words.right
        anchors.leftMargin: 16
        anchors.right: action.left
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        visible: bar.record.isBusy
        value: bar.record.progress
        Accessible.name: words.text
    }
    PushButton {
        id: action
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        text: bar.record.isBusy ? Texts.of("Отменить") : Texts.of("Закрыть")
        onClicked: bar.record.isBusy ? bar.record.cancel() : bar.record.clearError()
    }
}
