// How much of a transfer is done.
import QtQuick
import Varnok

Rectangle {
    id: line

    property real value: 0

    implicitHeight: 6
    radius: 3
    color: Theme.separator
    Accessible.role: Accessible.ProgressBar
    Accessible.name: Texts.format("PERCENT", Math.floor(value * 100))

    Rectangle {
        anchors.left: parent.left
        width: Math.max(height, parent.width * Math.min(1, line.value))
        height: parent.height
        radius: 3
        color: Theme.accent
    }
}
