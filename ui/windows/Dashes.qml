import QtQuick
import Orvane.Windows

/// A dashed frame around a place to drop something. Fills its parent.
Canvas {
    id: dashes

    readonly property color ink: Theme.secondary

    Accessible.ignored: true
    onInkChanged: requestPaint()
    onPaint: {
        const context = getContext("2d");
        const r = Theme.dropRadius;
        context.reset();
        context.strokeStyle = ink;
        context.lineWidth = 1;
        context.setLineDash([4, 3]);
        context.beginPath();
        context.roundedRect(0.5, 0.5, width - 1, height - 1, r, r);
        context.stroke();
    }
}
