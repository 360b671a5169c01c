// The buttons of a row that has some, beside one another where they fit.
pragma ComponentBehavior: Bound
import QtQuick
import Varnok

Flow {
    id: flow

    required property var titles
    // How wide a button may be.
    property real room: Infinity

    signal pressed()

    spacing: Theme.gap
    Repeater {
        model: flow.titles
        ActionButton {
            required property string modelData
            objectName: "segment"
            width: Math.min(implicitWidth, flow.room)
            focusPolicy: Qt.NoFocus
            text: modelData
            onClicked: flow.pressed()
        }
    }
}
