import QtQuick
import Orvane.Windows

/// Text as it stands most often; the other sizes are its roles.
Text {
    enum Role { Body, Title, Small, Clock, Button }
    property int role: Words.Body

    color: role === Words.Small ? Theme.secondary : Theme.text
    font.family: Theme.family
    font.pixelSize: [Theme.body, Theme.title, Theme.small, Theme.clock, Theme.button][role]
    font.weight: role === Words.Title ? Font.DemiBold : Font.Normal
    lineHeight: [20, 28, 16, 48, 20][role]
    lineHeightMode: Text.FixedHeight
    verticalAlignment: Text.AlignVCenter
    textFormat: Text.PlainText
    elide: wrapMode === Text.NoWrap ? Text.ElideRight : Text.ElideNone
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text === ""
}
