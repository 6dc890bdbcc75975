import QtQuick
import QtQuick.Templates as T
import Orvane.Windows

/// A button with words, an icon or both. The accent marks the one thing to do next.
T.Button {
    id: button

    property bool accented: false
    property string iconName: ""
    /// For a tooltip, and the keys that do the same.
    property string hint: ""
    property string keys: ""
    /// Whoever has pressed it knows.
    property bool isHintSpent: false
    readonly property color ink: accented ? Theme.overAccent : Theme.text

    /// As a press of the user does.
    function activate() {
        if (enabled)
            clicked();
    }

    implicitHeight: Theme.control
    implicitWidth: Math.max(implicitHeight, row.implicitWidth + leftPadding + rightPadding)
    leftPadding: text === "" ? 7 : 13
    rightPadding: leftPadding
    opacity: enabled ? 1 : 0.45
    focusPolicy: Qt.StrongFocus
    Accessible.name: text !== "" ? text : hint
    Accessible.description: keys
    Accessible.onPressAction: activate()
    Keys.onReturnPressed: activate()
    Keys.onEnterPressed: activate()

    onClicked: isHintSpent = true
    onHoveredChanged: if (!hovered)
        isHintSpent = false

    background: Rectangle {
        radius: Theme.radius
        color: {
            if (button.accented)
                return button.down ? Qt.darker(Theme.accent, 1.15) : button.hovered ? Qt.darker(Theme.accent, 1.06) : Theme.accent;
            if (button.down || button.checked)
                return Theme.selection;
            return button.hovered ? Theme.hover : button.flat ? "transparent" : Theme.surface;
        }
        border.width: button.accented || button.flat ? 0 : 1
        border.color: Theme.line
        FocusFrame {
            shown: button.visualFocus
        }
    }
    contentItem: Item {
        implicitWidth: row.implicitWidth
        Row {
            id: row
            anchors.centerIn: parent
            spacing: 8
            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: button.iconName !== ""
                name: button.iconName
                color: button.ink
                size: 18
            }
            Words {
                anchors.verticalCenter: parent.verticalCenter
                visible: button.text !== ""
                role: Words.Button
                color: button.ink
                text: button.text
                font.weight: button.accented ? Font.Medium : Font.Normal
                Accessible.ignored: true
            }
        }
    }
    Hint {
        visible: button.hovered && !button.isHintSpent && (button.hint !== "" || button.keys !== "")
        text: button.hint
        keys: button.keys
    }
}
