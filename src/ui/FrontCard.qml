// A card in front of everything else.
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Varnok

Popup {
    property bool rightToLeft: false

    parent: T.Overlay.overlay
    modal: true
    focus: true
    padding: 20

    T.Overlay.modal: Rectangle { color: Theme.dim }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.quick } }
    exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.quick } }

    background: Rectangle {
        radius: 20
        color: Theme.raised
    }
}
