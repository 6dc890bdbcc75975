import QtQuick
import QtQuick.Templates as T
import QtMultimedia
import Orvane.Windows

/// Plays the record's audio.
Rectangle {
    id: bar

    required property QtObject record
    readonly property bool isPlaying: media.playbackState === MediaPlayer.PlayingState
    readonly property bool isOpen: media.playbackState !== MediaPlayer.StoppedState || media.position > 0
    readonly property int position: media.position
    readonly property var speeds: [0.5, 0.75, 1, 1.25, 1.5, 2]

    function toggle() {
        isPlaying ? media.pause() : media.play();
    }
    function playFrom(ms) {
        media.position = ms;
        media.play();
    }

    color: Theme.surface
    Line {
        width: parent.width
    }
    MediaPlayer {
        id: media
        source: bar.record.audioUrl
        audioOutput: AudioOutput {}
    }
    T.RoundButton {
        id: button
        x: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        Accessible.name: bar.isPlaying ? Texts.of("Пауза") : Texts.of("Слушать")
        Accessible.onPressAction: if (enabled) clicked()
        Keys.onReturnPressed: clicked()
        onClicked: bar.toggle()
        background: Rectangle {
            radius: 18
            color: button.hovered ? Qt.darker(Theme.accent, 1.06) : Theme.accent
            border.width: button.visualFocus ? 2 : 0
            border.color: Theme.text
        }
        contentItem: Item {
            Icon {
                anchors.centerIn: parent
                size: 18
                name: bar.isPlaying ? "pause" : "play"
                color: Theme.overAccent
            }
        }
        Hint {
            visible: button.hovered
            text: button.Accessible.name
            keys: Texts.of("Пробел")
        }
    }
    Words {
        id: now
        anchors.left: button.right
        anchors.leftMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        width: 56
        horizontalAlignment: Text.AlignRight
        color: Theme.secondary
        text: bar.record.timeText(media.position)
    }
    T.Slider {
        id: slider
        anchors.left: now.right
        anchors.leftMargin: 16
        anchors.right: end.left
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        height: 24
        to: Math.max(1, media.duration)
        stepSize: 5000
        value: pressed ? value : media.position
        onMoved: media.position = value
        Accessible.name: Texts.of("Место в записи")
        background: Rectangle {
            y: (slider.height - height) / 2
            width: slider.width
            height: 4
            radius: 2
            color: Theme.line
            Rectangle {
                width: slider.visualPosition * parent.width
                height: parent.height
                radius: 2
                color: Theme.accent
            }
        }
        handle: Rectangle {
            x: slider.visualPosition * (slider.width - width)
            y: (slider.height - height) / 2
            width: 14
            height: 14
            radius: 7
            color: Theme.accent
            border.width: slider.visualFocus ? 2 : 0
            border.color: Theme.text
        }
    }
    Words {
        id: end
        anchors.right: speed.left
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        color: media.error === MediaPlayer.NoError ? Theme.secondary : Theme.accent
        text: media.error === MediaPlayer.NoError ? bar.record.timeText(media.duration) : Texts.of("Не воспроизводится")
    }
    Picker {
        id: speed
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.verticalCenter: parent.verticalCenter
        width: 84
        label: Texts.of("Скорость")
        labelShown: false
        model: bar.speeds.map(speed => Texts.decimal(speed) + "×")
        currentIndex: 2
        onActivated: index => media.playbackRate = bar.speeds[index]
    }
    Shortcut {
        sequence: "Space"
        enabled: {
            const item = bar.Window.activeFocusItem;
            return item === null || !(item instanceof TextInput) && !(item instanceof TextEdit && !item.readOnly) && !(item instanceof T.AbstractButton) && !(item instanceof T.ComboBox);
        }
        onActivated: bar.toggle()
    }
}
