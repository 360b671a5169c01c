// A button with a text, whose weight tells how much it is meant.
import QtQuick
import QtQuick.Controls.Basic
import Varnok

AbstractButton {
    id: button

    enum Weight { Plain, Tonal, Filled }

    property int weight: ActionButton.Tonal
    property bool destructive: false
    property string symbol

    readonly property color textColor: weight === ActionButton.Filled ? Theme.fillText
                                       : destructive ? Theme.destructive : Theme.accent
    readonly property color fillColor: weight === ActionButton.Filled
        ? (destructive ? (down ? Theme.destructiveFillPressed : Theme.destructiveFill) : (down ? Theme.fillPressed : Theme.fill))
        : weight === ActionButton.Tonal
          ? (destructive ? (down ? Theme.destructiveTonalPressed : Theme.destructiveTonal) : (down ? Theme.tonalPressed : Theme.tonal))
          : (down ? Theme.pressed : hovered ? Theme.hovered : "transparent")

    leftPadding: 20
    rightPadding: 20
    topPadding: 10
    bottomPadding: 10

    implicitWidth: Math.max(Theme.target, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(Theme.target, implicitContentHeight + topPadding + bottomPadding)
    focusPolicy: Qt.TabFocus
    opacity: enabled ? 1 : 0.45
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: button.clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: Math.min(Theme.buttonRadius, height / 2)
        color: button.fillColor
        FocusRing {
            visible: button.visualFocus
            anchors.margins: -4
            radius: parent.radius + 4
        }
    }
    contentItem: Face {
        text: button.text
        symbol: button.symbol
        color: button.textColor
    }

    component Face: Item {
        id: face

        required property string text
        required property string symbol
        required property color color
        readonly property real symbolWidth: symbol.length > 0 ? 20 + Theme.gap : 0

        implicitWidth: Math.ceil(label.implicitWidth) + symbolWidth
        implicitHeight: label.implicitHeight

        Row {
            anchors.centerIn: parent
            spacing: Theme.gap
            Icon {
                visible: face.symbol.length > 0
                anchors.verticalCenter: parent.verticalCenter
                width: 20
                height: 20
                name: face.symbol
                color: face.color
            }
            Text {
                id: label
                width: Math.min(Math.ceil(implicitWidth), Math.max(0, face.width - face.symbolWidth))
                text: face.text
                font.pixelSize: Theme.body
                font.weight: Font.DemiBold
                color: face.color
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
            }
        }
    }
}
