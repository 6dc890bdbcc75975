import QtQuick
import Orvane.Indicator

// The capsule: 380 × 126, dark on every desktop.
Rectangle {
    id: capsule

    required property var hud
    required property string fontFamily

    readonly property bool hasNotice: hud.notice !== ""
    readonly property real rightMargin: hud.needsCancel ? 48 : 20

    color: "#212120"
    border.color: "#33322f"
    radius: 28

    Accessible.role: Accessible.AlertMessage
    Accessible.name: hasNotice ? hud.notice : hud.title
    Accessible.description: hasNotice ? "" : hud.subtitle

    Text {
        anchors.fill: parent
        anchors { leftMargin: 20; rightMargin: 20; topMargin: 12; bottomMargin: 12 }
        visible: capsule.hasNotice
        text: capsule.hud.notice
        textFormat: Text.PlainText
        color: "#edece8"
        font { family: capsule.fontFamily; pixelSize: 14 }
        fontSizeMode: Text.Fit
        minimumPixelSize: 12
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.Wrap
        elide: Text.ElideRight
    }

    Item {
        anchors.fill: parent
        visible: !capsule.hasNotice

        Image {
            x: 19
            y: 22
            source: "icons/" + capsule.hud.iconName + ".svg"
            sourceSize { width: 20; height: 20 }
            cache: false
        }

        Text {
            x: 50
            y: 12
            width: dots.x - x - 8
            height: 20
            text: capsule.hud.title
            textFormat: Text.PlainText
            color: "#edece8"
            font { family: capsule.fontFamily; pixelSize: 14; weight: Font.DemiBold }
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
        }

        Text {
            x: 50
            y: 34
            width: (dots.visible ? dots.x - 8 : capsule.width - capsule.rightMargin) - x
            height: 16
            text: capsule.hud.subtitle
            textFormat: Text.PlainText
            color: capsule.hud.subtitleIsWarning ? "#edece8" : "#9c9a93"
            font { family: capsule.fontFamily; pixelSize: 12 }
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 10
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
        }

        Dots {
            id: dots
            anchors { right: parent.right; rightMargin: capsule.rightMargin }
            y: 30
            visible: capsule.hud.isWorking
        }

        CancelButton {
            x: 342
            y: 14
            visible: capsule.hud.needsCancel
            title: capsule.hud.cancelText
            onChosen: capsule.hud.cancel()
        }

        Waveform {
            x: 20
            y: 59
            width: 340
            height: 24
            visible: capsule.hud.isListening
            levels: capsule.hud.waveform
            color: "#ff6b57"
        }

        Row {
            x: 20
            y: 90
            spacing: 8

            Repeater {
                model: capsule.hud.chipTitles

                Chip {
                    required property int index
                    required property string modelData

                    title: modelData
                    help: capsule.hud.chipHelps[index]
                    fontFamily: capsule.fontFamily
                    selected: index === capsule.hud.selectedChip
                    onChosen: capsule.hud.selectChip(index)
                    onHoveredChanged: {
                        if (hovered)
                            capsule.hud.hoveredChip = index
                        else if (capsule.hud.hoveredChip === index)
                            capsule.hud.hoveredChip = -1
                    }
                }
            }
        }
    }
}
