import QtQuick
import Orvane.Windows

/// One of the program's own line icons.
Image {
    property string name
    property color color: Theme.text
    property int size: 20

    width: size
    height: size
    sourceSize: Qt.size(size * Screen.devicePixelRatio, size * Screen.devicePixelRatio)
    source: name === "" ? "" : "image://icon/" + name + "/" + color.toString().slice(-6)
    fillMode: Image.PreserveAspectFit
    Accessible.ignored: true
}
