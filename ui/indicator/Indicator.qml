import QtQuick
import Orvane.Indicator

// The capsule: 380 × 126, with the words so far 380 × 174; dark on every desktop. It grows upwards, so that
// nothing in it moves.
Item {
    id: scene

    required property var hud
    required property string fontFamily

    readonly property bool hasNotice: hud.notice !== ""
    readonly property real rightMargin: hud.needsCancel ? 48 : 20
    readonly property int lowHeight: 126
    readonly property alias capsuleHeight: capsule.height

    Accessible.role: Accessible.AlertMessage
    Accessible.name: hasNotice ? hud.notice : hud.title
    Accessible.description: hasNotice ? "" : hud.subtitle

    Rectangle {
        id: capsule
        anchors.bottom: parent.bottom
        width: parent.width
        height: scene.hud.hasLiveText ? scene.height : scene.lowHeight
        color: "#212120"
        border.color: "#33322f"
        radius: 28

        Behavior on height {
            enabled: scene.Window.visibility !== Window.Hidden
            NumberAnimation { duration: 160; easing.type: Easing.OutCubic }
        }

        Text {
            anchors.fill: parent
            anchors { leftMargin: 20; rightMargin: 20; topMargin: 12; bottomMargin: 12 }
            visible: scene.hasNotice
            text: scene.hud.notice
            textFormat: Text.PlainText
            color: "#edece8"
            font { family: scene.fontFamily; pixelSize: 14 }
            fontSizeMode: Text.Fit
            minimumPixelSize: 12
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            wrapMode: Text.Wrap
            elide: Text.ElideRight
        }

        LiveText {
            width: parent.width
            height: parent.height - scene.lowHeight
            visible: !scene.hasNotice
            hud: scene.hud
        }

        Item {
            anchors.bottom: parent.bottom
            width: parent.width
            height: scene.lowHeight
            visible: !scene.hasNotice

            Image {
                x: 19
                y: 22
                source: "icons/" + scene.hud.iconName + ".svg"
                sourceSize { width: 20; height: 20 }
                cache: false
            }

            Text {
                x: 50
                y: 12
                width: dots.x - x - 8
                height: 20
                text: scene.hud.title
                textFormat: Text.PlainText
                color: "#edece8"
                font { family: scene.fontFamily; pixelSize: 14; weight: Font.DemiBold }
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
            }

            Text {
                x: 50
                y: 34
                width: (dots.visible ? dots.x - 8 : scene.width - scene.rightMargin) - x
                height: 16
                text: scene.hud.subtitle
                textFormat: Text.PlainText
                color: scene.hud.subtitleIsWarning ? "#edece8" : "#9c9a93"
                font { family: scene.fontFamily; pixelSize: 12 }
                fontSizeMode: Text.HorizontalFit
                minimumPixelSize: 10
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
            }

            Dots {
                id: dots
                anchors { right: parent.right; rightMargin: scene.rightMargin }
                y: 30
                visible: scene.hud.isWorking
            }

            CancelButton {
                x: 342
                y: 14
                visible: scene.hud.needsCancel
                title: scene.hud.cancelText
                onChosen: scene.hud.cancel()
            }

            Waveform {
                x: 20
                y: 59
                width: 340
                height: 24
                visible: scene.hud.isListening
                levels: scene.hud.waveform
                color: "#ff6b57"
            }

            Row {
                x: 20
                y: 90
                spacing: 8

                Repeater {
                    model: scene.hud.chipTitles

                    Chip {
                        required property int index
                        required property string modelData

                        title: modelData
                        help: scene.hud.chipHelps[index]
                        fontFamily: scene.fontFamily
                        selected: index === scene.hud.selectedChip
                        onChosen: scene.hud.selectChip(index)
                        onHoveredChanged: {
                            if (hovered)
                                scene.hud.hoveredChip = index
                            else if (scene.hud.hoveredChip === index)
                                scene.hud.hoveredChip = -1
                        }
                    }
                }
            }
        }
    }
}
