// In front of everything while work goes on that the user waits for.
import QtQuick
import QtQuick.Controls.Basic
import Varnok

FrontCard {
    id: popup

    required property Presenter presenter
    readonly property bool wanted: presenter.overlayShown

    onWantedChanged: wanted ? open() : close()
    Component.onCompleted: if (wanted) open()

    anchors.centerIn: parent
    closePolicy: Popup.NoAutoClose
    padding: 28
    width: Math.min(Math.max(200, label.implicitWidth + 2 * padding), parent ? parent.width - 2 * Theme.margin : 200)

    Column {
        width: popup.availableWidth
        spacing: 20
        Item {
            width: parent.width
            height: 48
            Spinner {
                anchors.centerIn: parent
                width: 48
                height: 48
                visible: popup.visible && !popup.presenter.overlayChecked
            }
            Rectangle {
                anchors.centerIn: parent
                visible: popup.presenter.overlayChecked
                width: 48
                height: 48
                radius: 24
                color: Theme.fill
                Icon {
                    anchors.centerIn: parent
                    width: 28
                    height: 28
                    name: "check"
                    color: Theme.fillText
                }
            }
        }
        Text {
            id: label
            width: popup.availableWidth
            text: popup.presenter.overlayText
            font.pixelSize: Theme.body
            font.weight: Font.Medium
            color: Theme.text
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }
}
