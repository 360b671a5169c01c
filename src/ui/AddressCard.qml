// An address for another device: large, to be typed, scanned or copied.
import QtQuick
import Varnok

Column {
    id: card

    property string address
    property string note

    spacing: Theme.margin

    Text {
        width: parent.width
        text: card.address
        font.pixelSize: Theme.title
        font.weight: Font.DemiBold
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: Theme.body
        color: Theme.text
        wrapMode: Text.WrapAnywhere
        maximumLineCount: 3
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    Text {
        visible: text.length > 0
        width: parent.width
        text: card.note
        font.pixelSize: Theme.heading
        color: Theme.text
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        width: 162
        height: 162
        radius: Theme.gap
        color: "white"
        QrCode {
            anchors.centerIn: parent
            width: 148
            height: 148
            text: card.address
            Accessible.role: Accessible.Graphic
            Accessible.name: Texts.text("QR_CODE")
        }
    }
    ActionButton {
        id: copy
        objectName: "copyAddress"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, parent.width)
        symbol: copied.running ? "check" : "copy"
        text: Texts.text(copied.running ? "ADDRESS_COPIED" : "COPY_ADDRESS")
        onClicked: {
            source.selectAll()
            source.copy()
            copied.restart()
        }
        Timer {
            id: copied
            interval: 2000
        }
        TextInput {
            id: source
            visible: false
            text: card.address
        }
    }
}
