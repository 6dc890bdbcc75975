import QtQuick
import Orvane.Windows

/// A question with a yes and a no; Return is yes, Esc is no.
Sheet {
    id: confirm

    property string text
    property string yes
    property string no: Texts.of("Отмена")

    onOpened: yesButton.forceActiveFocus(Qt.TabFocusReason)
    contentItem: Words {
        text: confirm.text
        wrapMode: Text.Wrap
        color: Theme.secondary
    }
    actions: [
        PushButton {
            text: confirm.no
            onClicked: confirm.reject()
        },
        PushButton {
            id: yesButton
            accented: true
            text: confirm.yes
            onClicked: confirm.accept()
        }
    ]
}
