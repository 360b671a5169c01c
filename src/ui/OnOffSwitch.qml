// How a switch stands. The row it is in is what is touched.
import QtQuick
import Varnok

Rectangle {
    id: track

    property bool on: false

    implicitWidth: 48
    implicitHeight: 28
    radius: height / 2
    color: on ? Theme.fill : Theme.track

    Behavior on color { ColorAnimation { duration: Theme.quick } }

    Rectangle {
        readonly property bool atEnd: track.on !== track.LayoutMirroring.enabled
        x: atEnd ? track.width - width - 3 : 3
        y: 3
        width: 22
        height: 22
        radius: 11
        color: Theme.knob
        Behavior on x { NumberAnimation { duration: Theme.quick; easing.type: Easing.OutCubic } }
    }
}
