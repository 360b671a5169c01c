// Around what the keyboard is on.
import QtQuick
import Varnok

Rectangle {
    anchors.fill: parent
    color: "transparent"
    border.color: Theme.focus
    border.width: 3
}
