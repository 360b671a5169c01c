// A button that is an icon; its text is its name.
import QtQuick
import QtQuick.Controls.Basic
import Varnok

AbstractButton {
    id: button

    property string symbol
    property color color: Theme.text
    // The icon points along the text.
    property bool directed: false

    implicitWidth: Theme.target
    implicitHeight: Theme.target
    focusPolicy: Qt.TabFocus
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: button.clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    ToolTip.visible: hovered && text.length > 0
    ToolTip.delay: 700
    ToolTip.text: text

    background: Rectangle {
        radius: width / 2
        color: button.down ? Theme.pressed : button.hovered ? Theme.separator : "transparent"
        FocusRing {
            visible: button.visualFocus
            radius: parent.radius
        }
    }
    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            width: Theme.icon
            height: Theme.icon
            name: button.symbol
            color: button.color
            mirrored: button.directed && button.mirrored
        }
    }
}
