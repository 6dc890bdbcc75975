import QtQml
import Orvane.Windows

/// What all windows share, for the module to set.
QtObject {
    readonly property QtObject theme: Theme
    readonly property QtObject texts: Texts
}
