import QtQuick
import Orvane.Windows

/// What could be made of a record, or why it cannot be.
Column {
    id: offer

    required property QtObject record
    property string iconName
    property string title
    property string text
    property string action

    signal accepted

    spacing: 20
    Empty {
        width: parent.width
        iconName: offer.iconName
        title: offer.title
        text: offer.record.canProcess ? offer.text : offer.record.processingRefusal
    }
    PushButton {
        anchors.horizontalCenter: parent.horizontalCenter
        accented: true
        text: offer.record.canProcess ? offer.action : Texts.of("Открыть настройки")
        onClicked: offer.record.canProcess ? offer.accepted() : offer.record.showSettings()
    }
}
